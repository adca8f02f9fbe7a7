#pragma once

#include <optional>
#include <string_view>

namespace framewright {

/// Width and height in pixels.
struct PixelSize {
    int width = 0;
    int height = 0;

    bool operator==(PixelSize const&) const = default;
};

/// The shape of the canvas.
enum class AspectPreset { portrait, landscape, square, fourFive };

/// The preset a user means by a word, in any case: "9:16", "reel", "wide", "1x1" and so on.
std::optional<AspectPreset> aspectPresetNamed(std::string_view word);

/// The preset whose ratio is nearest to width / height, in logarithms; `portrait` when either side
/// is not above 0.
AspectPreset closestAspectPreset(double width, double height);

/// "9:16", "16:9", "1:1" or "4:5".
std::string_view ratioName(AspectPreset preset);

/// The smallest canvas a preset is exported at: 1080 x 1920 for portrait.
PixelSize baseCanvas(AspectPreset preset);

} // namespace framewright
