#pragma once

#include "media/frame.h"

#include <filesystem>

namespace framewright {

/// Reads a photo upright (its orientation applied), no side longer than `maxSide` pixels, what is
/// transparent on black. An animated picture gives its first frame.
///
/// The result is planar 4:4:4 or 4:2:0, tagged with its colours. Blocks. Throws MediaError.
Frame readPhoto(std::filesystem::path const& file, int maxSide);

} // namespace framewright
