#include "cli/values.h"

#include "cli/internal/number_text.h"
#include "cli/tool_error.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>

namespace framewright {

namespace {

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

char lowered(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

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

bool equalIgnoringCase(std::string_view a, std::string_view b)
{
    return std::ranges::equal(a, b, {}, lowered, lowered);
}

std::optional<double> parseSeconds(std::string_view text)
{
    std::size_t const colon = text.find(':');
    if (colon == std::string_view::npos)
        return parseNumber(text);

    std::string_view const minutes = text.substr(0, colon);
    std::string_view const seconds = text.substr(colon + 1);
    bool const isPlain =
        !minutes.empty() && std::ranges::all_of(minutes, isDigit) && !seconds.empty() &&
        isDigit(seconds[0]) &&
        std::ranges::all_of(seconds, [](char c) { return isDigit(c) || c == '.'; });
    auto const wholeMinutes = parseNumber(minutes);
    auto const rest = parseNumber(seconds);
    if (!isPlain || !wholeMinutes || !rest || *rest >= 60)
        return std::nullopt;
    return *wholeMinutes * 60 + *rest;
}

std::string secondsText(double seconds)
{
    return digits(seconds) + " s";
}

std::string rangeText(TimeRange const& range)
{
    if (std::isinf(range.end))
        return secondsText(range.start) + " onwards";
    return digits(range.start) + "–" + secondsText(range.end);
}

RGBAColor parseColor(std::string_view text)
{
    std::array<double, 4> parts{0, 0, 0, 1};
    bool isColor = text.starts_with('#') && (text.size() == 7 || text.size() == 9);
    for (std::size_t i = 0; isColor && 1 + 2 * i < text.size(); ++i) {
        char const* const begin = text.data() + 1 + 2 * i;
        unsigned value = 0;
        isColor = std::from_chars(begin, begin + 2, value, 16).ptr == begin + 2;
        parts[i] = value / 255.0;
    }
    if (!isColor)
        throw ToolError("Colors are #RRGGBB or #RRGGBBAA, not " + std::string(text) + ".");
    return {parts[0], parts[1], parts[2], parts[3]};
}

std::string formatColor(RGBAColor const& color)
{
    auto const byte = [](double part) {
        return static_cast<unsigned>(std::lround(std::clamp(part, 0.0, 1.0) * 255));
    };
    std::array<char, 10> text{};
    std::snprintf(text.data(), text.size(), "#%02X%02X%02X%02X", byte(color.red), byte(color.green),
                  byte(color.blue), byte(color.alpha));
    return text.data();
}

AspectPreset parseCanvas(std::string_view text)
{
    for (AspectPreset const preset : {AspectPreset::portrait, AspectPreset::landscape,
                                      AspectPreset::square, AspectPreset::fourFive}) {
        if (text == ratioName(preset))
            return preset;
    }
    throw ToolError("No canvas called " + std::string(text) + ". Use 9:16, 16:9, 1:1 or 4:5.");
}

} // namespace framewright
