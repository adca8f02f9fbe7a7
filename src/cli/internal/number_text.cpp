#include "cli/internal/number_text.h"

#include <charconv>

namespace framewright {

std::optional<double> parseNumber(std::string_view text)
{
    // Without this the standard library's reading would also take "inf" and "nan".
    if (text.find_first_not_of("0123456789+-.eE") != std::string_view::npos)
        return std::nullopt;
    if (text.starts_with('+')) {
        text.remove_prefix(1);
        if (text.starts_with('-'))
            return std::nullopt;
    }
    double number = 0;
    char const* const end = text.data() + text.size();
    auto const [read, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || read != end)
        return std::nullopt;
    return number;
}

} // namespace framewright
