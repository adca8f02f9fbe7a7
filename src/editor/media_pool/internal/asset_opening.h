#pragma once

#include "composition/loaded_asset.h"
#include "editor/media_pool/media_pool.h"
#include "model/media_asset.h"
#include "model/shared.h"
#include "pipeline/file_identity.h"

#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <variant>
#include <vector>

namespace framewright {

/// The assets of a project, as it holds them.
using ProjectAssets = Shared<std::map<Id, MediaAsset>>;

/// The files behind assets, as they were when they were probed or found missing.
using SeenFiles = Shared<std::map<Id, FileIdentity>>;

/// What was found behind an asset.
struct OpenedAsset {
    Id id;
    std::string wanted; ///< The path that the project had for it.
    FileIdentity seen;  ///< Of the file found or expected, from before it was opened.
    std::variant<LoadedAsset, std::string> result; ///< Or the sentence that says why not.

    LoadedAsset const* loaded() const { return std::get_if<LoadedAsset>(&result); }
};

/// Probes a file. Blocks. Throws MediaError, also for one whose frames can't be drawn.
LoadedAsset openMedia(std::filesystem::path const& file);

/// Finds and opens the files of a project that is being opened. Blocks.
std::vector<OpenedAsset> openAssets(ProjectAssets const& assets, MediaPlaces const& places);

/// Opens those whose file is not the one that was seen: it appeared, vanished, was replaced or has
/// never been seen. Those in `searched` are opened in any case. A file that is still in its place
/// is not searched for in others. Blocks.
std::vector<OpenedAsset> openChangedAssets(ProjectAssets const& assets, SeenFiles const& seen,
                                           std::set<Id> const& searched, MediaPlaces const& places);

} // namespace framewright
