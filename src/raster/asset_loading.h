#pragma once

#include "composition/loaded_asset.h"

namespace framewright {

/// The asset of `file`, by what was found in it. Photos are always read upright, so theirs is the
/// upright size and no transform. Throws MediaError when its colours are such that its pictures
/// can't be drawn.
LoadedAsset loadedAsset(std::filesystem::path const& file, MediaInfo const& info);

} // namespace framewright
