#pragma once

#include <optional>
#include <string_view>

namespace framewright {

/// A decimal number that is the whole text ("-.5", "1e3", "007"). Nothing for any other text, and
/// for numbers that a double can't hold: no infinity, no hexadecimal, no blanks.
std::optional<double> parseNumber(std::string_view text);

} // namespace framewright
