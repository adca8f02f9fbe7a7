// The media of an AppState's project: looking into files, registering them, opening them again.

#include "editor/app_state.h"
#include "editor/next_emission.h"
#include "editor/worker_task.h"

#include "media/media_error.h"
#include "model/file_url.h"
#include "workspace/media_finder.h"
#include "workspace/workspace.h"

#include <algorithm>
#include <variant>

namespace framewright {

namespace {

/// Where the media of a project may be looked for.
struct MediaPlaces {
    std::filesystem::path projectFolder;
    std::vector<std::filesystem::path> mediaFolders;
    AssetRefs refs;
};

/// What is found behind an asset when its project is opened.
struct OpenedAsset {
    Id id;
    std::filesystem::path file;
    std::variant<LoadedAsset, std::string> result; ///< Or the sentence that says why not.
};

OpenedAsset openAsset(MediaAsset const& asset, MediaPlaces const& places, MediaFinder& finder)
{
    MediaWanted wanted{"", asset.url, std::nullopt};
    if (auto const ref = places.refs.find(asset.id); ref != places.refs.end()) {
        wanted.path = ref->second.path;
        wanted.size = knownSize(ref->second);
    }
    std::filesystem::path const file = finder.find(wanted).value_or(asset.url.path);
    try {
        return {asset.id, file, loadedAsset(file, probeMedia(file))};
    } catch (std::exception const& error) {
        return {asset.id, file, std::string(error.what())};
    }
}

std::vector<OpenedAsset> openAssets(std::vector<MediaAsset> const& assets,
                                    MediaPlaces const& places)
{
    MediaFinder finder(places.projectFolder, places.mediaFolders);
    std::vector<OpenedAsset> opened;
    for (MediaAsset const& asset : assets)
        opened.push_back(openAsset(asset, places, finder));
    return opened;
}

/// The media folders of the workspace that a project lies in; none when they can't be read.
std::vector<std::filesystem::path> mediaFoldersAround(std::filesystem::path const& folder)
{
    auto const workspace = Workspace::findWorkspace(folder);
    try {
        return workspace ? Workspace::mediaFolders(*workspace)
                         : std::vector<std::filesystem::path>();
    } catch (WorkspaceError const&) {
        return {}; // Opening the workspace says what is wrong with it.
    }
}

} // namespace

QCoro::Task<AppState::Imported> AppState::inspect(std::filesystem::path file)
{
    // The project's own entry serves for a file it has already, however the path was written.
    struct Found {
        std::filesystem::path file;
        MediaInfo info;
    };
    auto const look = [file]() -> Found {
        MediaInfo const info = probeMedia(file);
        return {std::filesystem::canonical(file), info};
    };
    Found const found = co_await onWorker(look);

    LoadedAsset loaded = loadedAsset(found.file, found.info);
    for (auto const& [id, asset] : *m_project.assets) {
        if (asset.url.path == found.file.string())
            co_return Imported{asset, std::move(loaded), false};
    }
    MediaAsset asset;
    asset.id = Id::random();
    asset.url.path = found.file.string();
    asset.playbackURL = asset.url;
    asset.kind = found.info.kind;
    asset.duration = found.info.duration;
    asset.displayName = validUtf8(found.file.filename().string());
    co_return Imported{std::move(asset), std::move(loaded), true};
}

std::vector<MediaAsset> AppState::importFiles(std::vector<Imported> const& files)
{
    Project project = m_project;
    std::vector<MediaAsset> assets;
    for (Imported const& file : files) {
        // The same file may have been given twice.
        auto const twin = std::ranges::find_if(
            *project.assets, [&](auto const& entry) { return entry.second.url == file.asset.url; });
        if (twin != project.assets->end()) {
            assets.push_back(twin->second);
            continue;
        }
        project.assets.edit()[file.asset.id] = file.asset;
        m_assets.insert(file.asset.id, file.loaded);
        assets.push_back(file.asset);
    }
    if (!(project == m_project))
        commit(std::move(project), "Import Media", std::nullopt, Rebuild::no);
    return assets;
}

Project AppState::withAsset(Imported const& file)
{
    Project project = m_project;
    m_assets.insert(file.asset.id, file.loaded);
    m_assetProblems.erase(file.asset.id);
    if (file.isNew)
        project.assets.edit()[file.asset.id] = file.asset;
    return project;
}

QCoro::Task<void> AppState::loadAssets()
{
    QPointer<AppState> const self(this);
    auto const round = ++m_loadingRound;
    m_assetProblems.clear();
    m_isLoadingAssets = !m_project.assets->empty();
    if (!m_isLoadingAssets) {
        emit assetsWereLoaded();
        co_return;
    }
    std::vector<MediaAsset> assets;
    for (auto const& [id, asset] : *m_project.assets)
        assets.push_back(asset);

    MediaPlaces places;
    if (m_projectFile)
        places.projectFolder = m_projectFile->parent_path();
    places.refs = m_assetRefs;
    auto const open = [assets, places] {
        MediaPlaces all = places;
        all.mediaFolders = mediaFoldersAround(all.projectFolder);
        return openAssets(assets, all);
    };
    std::vector<OpenedAsset> const opened = co_await onWorker(open);

    // Another project, or another state of this one, may have been opened meanwhile.
    if (!self || round != m_loadingRound)
        co_return;
    std::map<Id, std::filesystem::path> moved;
    for (OpenedAsset const& asset : opened) {
        MediaAsset const* const known = m_project.asset(asset.id);
        if (known && known->url.path != asset.file.string())
            moved[asset.id] = asset.file;
        if (auto const* const loaded = std::get_if<LoadedAsset>(&asset.result))
            m_assets.insert(asset.id, *loaded);
        else
            m_assetProblems[asset.id] = std::get<std::string>(asset.result);
    }
    m_isLoadingAssets = false;
    if (!moved.empty())
        moveAssets(moved);
    emit compositionOutdated();
    emit assetsWereLoaded();
}

void AppState::moveAssets(std::map<Id, std::filesystem::path> const& found)
{
    // Not a step of the user's: where files lie is a fact, also for every earlier state.
    auto const follow = [&](Project& project) {
        for (auto const& [id, file] : found) {
            if (!project.asset(id))
                continue;
            MediaAsset& asset = project.assets.edit()[id];
            asset.url.path = file.string();
            asset.playbackURL = asset.url;
        }
    };
    follow(m_project);
    m_history.forEachProject(follow);
    ++m_revision;
    setDirty(true);
    scheduleSave();
    emit projectChanged();
}

QCoro::Task<void> AppState::assetsLoaded()
{
    while (m_isLoadingAssets)
        co_await NextEmission(this, &AppState::assetsWereLoaded);
}

std::optional<std::string> AppState::assetProblem(Id const& id) const
{
    auto const found = m_assetProblems.find(id);
    return found == m_assetProblems.end() ? std::nullopt : std::optional(found->second);
}

} // namespace framewright
