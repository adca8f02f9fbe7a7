#pragma once

#include "model/outcome.h"
#include "stills/still_frames.h"

#include <optional>
#include <span>
#include <string>
#include <vector>

namespace framewright {

/// Which moments a contact sheet shows. Seconds.
struct SheetMoments {
    std::optional<double> every = {}; ///< From one to the next; a twelfth of the range by default.
    std::vector<double> times = {};   ///< These instead of regular ones.
    std::optional<double> start = {}; ///< The first; the beginning by default.
    std::optional<double> end = {};   ///< Before this one; the end of the piece by default.
};

constexpr std::size_t mostSheetFrames = 48;

/// The moments of a piece that lasts `duration`, one at least. Refused with a sentence when there
/// are none or too many of them.
Outcome<std::vector<double>> sheetTimes(SheetMoments const& moments, double duration);

/// "0:04.50": minutes, seconds and hundredths.
std::string timeLabel(double seconds);

/// An image of many frames in rows, each labelled with its time if it is wide enough for that.
struct ContactSheet {
    int columns = 4;
    int frameWidth = 240; ///< Pixels.

    /// The size of the whole for this many frames of a canvas.
    PixelSize size(AspectPreset canvas, std::size_t frames) const;

    /// Draws it; slow, like StillFrames.
    RGBImage draw(StillFrames& stills, Project const& project, AssetStore const& assets,
                  std::span<double const> times) const;
};

} // namespace framewright
