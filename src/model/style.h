#pragma once

#include "model/id.h"

#include <span>
#include <string>
#include <vector>

namespace framewright {

/// A colour, each part from 0 to 1, not premultiplied, in the sRGB space.
struct RGBAColor {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 1;

    bool operator==(RGBAColor const&) const = default;
};

/// How captions and on-screen texts are drawn. Users save it under its name.
///
/// Sizes are points at 1080 pixels of canvas width.
struct CaptionStyle {
    Id id;
    std::string name;
    std::string fontName; ///< A PostScript name, or "system:" or "mono:" and a weight.
    float fontSize = 64;
    RGBAColor textColor{1, 1, 1, 1};
    bool uppercase = false;
    float letterSpacing = 0;
    float maxWidthFraction = 0.9f; ///< Widest a line may be, as a fraction of the canvas width.
    bool backgroundEnabled = false;
    RGBAColor backgroundColor{0, 0, 0, 0.7};
    float cornerRadius = 0;
    float padding = 0; ///< Between the text and the edge of its box.
    bool shadowEnabled = false;
    float shadowOpacity = 0;
    float shadowRadius = 0;
    bool outlineEnabled = false;
    RGBAColor strokeColor{0, 0, 0, 1};
    float strokeWidth = 0;

    /// The built-in styles of captions, and of on-screen texts; the first is the default. Their
    /// ids never change.
    static std::span<CaptionStyle const> presets();
    static std::span<CaptionStyle const> textPresets();

    /// Its effects in short: "Box · Shadow · Outline · Caps", those that are on.
    std::string featureSummary() const;

    bool operator==(CaptionStyle const&) const = default;
};

/// Font sizes. Points.
inline constexpr float smallestFont = 8;
inline constexpr float largestFont = 240;

/// The range of one number of a style.
struct StyleRange {
    char const* key; ///< As it is stored.
    float CaptionStyle::*member;
    float least;
    float most;
};
std::span<StyleRange const> styleRanges();

/// A style that can be drawn, and a sentence for each value that was corrected.
struct NormalizedStyle {
    CaptionStyle style;
    std::vector<std::string>
        changes; ///< "fontSize of Classic is 8 to 240; 900 was changed to 240."
};

/// Clamps every value of a style to its range and gives a default to NaN, a missing name and a
/// missing font.
NormalizedStyle normalized(CaptionStyle style);

} // namespace framewright
