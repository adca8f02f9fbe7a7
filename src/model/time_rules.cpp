#include "model/time_rules.h"

#include <array>
#include <charconv>
#include <cmath>

namespace framewright {

namespace {

std::string digits(double seconds)
{
    std::array<char, 512> text;
    double const shown = std::abs(seconds) < 0.0005 ? 0 : seconds;
    auto const end =
        std::to_chars(text.data(), text.data() + text.size(), shown, std::chars_format::fixed, 3)
            .ptr;
    std::string number(text.data(), end);
    if (number.find('.') != std::string::npos) {
        number.erase(number.find_last_not_of('0') + 1);
        if (number.back() == '.')
            number.pop_back();
    }
    return number;
}

} // namespace

std::string secondsText(double seconds)
{
    return digits(seconds) + " s";
}

std::string stretchText(double from, double to)
{
    if (std::isinf(to))
        return secondsText(from) + " onwards";
    return digits(from) + "–" + secondsText(to);
}

} // namespace framewright
