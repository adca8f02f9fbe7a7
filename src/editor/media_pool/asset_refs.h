#pragma once

#include "model/project_document.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>

namespace framewright {

/// The media files of a project as its document refers to them, by asset.
using AssetRefs = std::map<Id, AssetRef>;

/// The size of an asset's file when it was last seen, in bytes; nothing when unknown.
std::optional<std::uintmax_t> knownSize(AssetRef const& ref);

/// References to the files of a project as they are now, seen from its folder. The reference of a
/// file that is missing stays as it was in `known`. Blocks while it checks each file.
AssetRefs currentAssetRefs(Project const& project, std::filesystem::path const& folder,
                           AssetRefs const& known);

} // namespace framewright
