#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace framewright {

std::string base64(std::string_view bytes);

/// Nothing when the text is not base64, padded to whole fours.
std::optional<std::string> fromBase64(std::string_view text);

} // namespace framewright
