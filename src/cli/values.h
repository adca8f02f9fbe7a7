#pragma once

#include "model/aspect_preset.h"
#include "model/style.h"

#include <optional>
#include <string>
#include <string_view>

namespace framewright {

/// Whether two texts differ in nothing but the case of ASCII letters.
bool equalIgnoringCase(std::string_view a, std::string_view b);

/// A number, or "m:ss.ss". Seconds.
std::optional<double> parseSeconds(std::string_view text);

/// "#RRGGBB" or "#RRGGBBAA". Throws ToolError for anything else.
RGBAColor parseColor(std::string_view text);

/// "#RRGGBBAA", upper case.
std::string formatColor(RGBAColor const& color);

/// "9:16", "16:9", "1:1" or "4:5". Throws ToolError for anything else.
AspectPreset parseCanvas(std::string_view text);

} // namespace framewright
