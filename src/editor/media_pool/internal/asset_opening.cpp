#include "editor/media_pool/internal/asset_opening.h"

#include "raster/asset_loading.h"
#include "workspace/media_finder.h"
#include "workspace/workspace.h"

#include <system_error>

namespace framewright {

namespace {

using Path = std::filesystem::path;

/// The media folders of the workspace around a project; none when they can't be read.
std::vector<Path> mediaFoldersAround(Path const& folder)
{
    auto const workspace = Workspace::findWorkspace(folder);
    try {
        return workspace ? Workspace::mediaFolders(*workspace) : std::vector<Path>();
    } catch (WorkspaceError const&) {
        return {}; // Opening the workspace reports the reason.
    }
}

MediaFinder finderFor(MediaPlaces const& places)
{
    return {places.projectFolder, mediaFoldersAround(places.projectFolder)};
}

MediaWanted wantedFor(MediaAsset const& asset, MediaPlaces const& places)
{
    MediaWanted wanted{"", asset.url, std::nullopt};
    if (auto const ref = places.refs.find(asset.id); ref != places.refs.end()) {
        wanted.path = ref->second.path;
        wanted.size = knownSize(ref->second);
    }
    return wanted;
}

OpenedAsset openAsset(MediaAsset const& asset, Path const& file)
{
    // Before opening it, so that a file written meanwhile counts as changed.
    OpenedAsset opened{asset.id, asset.url.path, FileIdentity::of(file), {}};
    try {
        opened.result = openMedia(file);
    } catch (std::exception const& error) {
        opened.result = std::string(error.what());
    }
    return opened;
}

} // namespace

LoadedAsset openMedia(Path const& file)
{
    return loadedAsset(file, probeMedia(file));
}

std::vector<OpenedAsset> openAssets(ProjectAssets const& assets, MediaPlaces const& places)
{
    MediaFinder finder = finderFor(places);
    std::vector<OpenedAsset> opened;
    for (auto const& [id, asset] : *assets) {
        auto const found = finder.find(wantedFor(asset, places));
        opened.push_back(openAsset(asset, found.value_or(asset.url.path)));
    }
    return opened;
}

std::vector<OpenedAsset> openChangedAssets(ProjectAssets const& assets, SeenFiles const& seen,
                                           std::set<Id> const& searched, MediaPlaces const& places)
{
    std::optional<MediaFinder> finder;
    std::vector<OpenedAsset> opened;
    for (auto const& [id, asset] : *assets) {
        FileIdentity const now = FileIdentity::of(asset.url.path);
        auto const before = seen->find(id);
        bool const isSame = before != seen->end() && before->second == now;
        if (isSame && !searched.contains(id))
            continue;
        if (now.exists()) {
            opened.push_back(openAsset(asset, now.file));
            continue;
        }
        MediaWanted wanted = wantedFor(asset, places);
        if (before != seen->end() && before->second.exists())
            wanted.size = before->second.size;
        if (!finder)
            finder = finderFor(places);
        opened.push_back(openAsset(asset, finder->find(wanted).value_or(now.file)));
    }
    return opened;
}

} // namespace framewright
