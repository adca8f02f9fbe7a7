#pragma once

#include "media/frame.h"

#include <filesystem>

namespace framewright {

/// Reads a photo upright (its orientation applied), no side longer than `maxSide` pixels, what is
/// transparent on black. An animated picture gives its first frame.
///
/// The result is 4:4:4 with 8 bits in BT.709, limited range: what the canvas of most pieces has,
/// so that only the scaling is left to do. Colour profiles are not applied. Blocks, for up to a
/// second with the largest photos.
///
/// Throws MediaError, also when the file's end is missing.
Frame readPhoto(std::filesystem::path const& file, int maxSide);

} // namespace framewright
