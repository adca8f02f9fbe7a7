#pragma once

#include "model/aspect_preset.h"
#include "model/style.h"
#include "model/time_range.h"

#include <optional>
#include <string>
#include <string_view>

namespace framewright {

/// Whether two texts differ in nothing but the case of ASCII letters.
bool equalIgnoringCase(std::string_view a, std::string_view b);

/// A number, or "m:ss.ss". Seconds.
std::optional<double> parseSeconds(std::string_view text);

/// Seconds as sentences write them, to the millisecond and no longer than needed: "12.4 s", "3 s".
std::string secondsText(double seconds);

/// A range as sentences write it: "3–7.5 s"; "3 s onwards" when it is endless.
std::string rangeText(TimeRange const& range);

/// "#RRGGBB" or "#RRGGBBAA". Throws ToolError for anything else.
RGBAColor parseColor(std::string_view text);

/// "#RRGGBBAA", upper case.
std::string formatColor(RGBAColor const& color);

/// "9:16", "16:9", "1:1" or "4:5". Throws ToolError for anything else.
AspectPreset parseCanvas(std::string_view text);

} // namespace framewright
