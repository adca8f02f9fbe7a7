#pragma once

#include "media/frame.h"

#include <filesystem>

namespace framewright {

/// Reads a photo with its orientation applied, scaled down so that no side exceeds `maxSide` pixels
/// and composited on black. An animated image gives its first frame.
///
/// The result is 8-bit 4:4:4 in limited-range BT.709, the colours of the usual canvas, so that only
/// scaling is left to do. Colour profiles are not applied. Blocks, up to a second for the largest
/// photos.
///
/// Throws MediaError, also for a truncated file.
Frame readPhoto(std::filesystem::path const& file, int maxSide);

} // namespace framewright
