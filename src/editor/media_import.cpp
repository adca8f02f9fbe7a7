// The media of an AppState's project: looking into files, registering them.

#include "editor/app_state.h"
#include "tasks/on_worker.h"

#include "media/media_error.h"
#include "model/file_url.h"

#include <algorithm>

namespace framewright {

QCoro::Task<AppState::Imported> AppState::inspect(std::filesystem::path file)
{
    // The project's own entry serves for a file it has already, however the path was written.
    struct Found {
        FileIdentity seen;
        LoadedAsset loaded;
    };
    auto const look = [file]() -> Found {
        FileIdentity seen = FileIdentity::of(file);
        LoadedAsset loaded = openMedia(file);
        std::error_code failed;
        seen.file = loaded.file = std::filesystem::canonical(file, failed);
        if (failed) // It went just now.
            throw MediaError(MediaError::Cause::missing,
                             validUtf8(file.filename().string()) + " does not exist.");
        return {seen, loaded};
    };
    Found const found = co_await onWorker(look);

    std::string const path = found.seen.file.string();
    for (auto const& [id, known] : *m_project.assets) {
        if (known.url.path != path)
            continue;
        OpenedAsset const opened{id, path, found.seen, found.loaded};
        takeOpened(std::vector<OpenedAsset>(1, opened));
        co_return *knownMedia(opened.id);
    }
    MediaAsset asset;
    asset.id = Id::random();
    asset.url.path = path;
    asset.playbackURL = asset.url;
    asset.kind = found.loaded.kind;
    asset.duration = found.loaded.duration;
    asset.displayName = validUtf8(found.seen.file.filename().string());
    co_return Imported{std::move(asset), found.loaded, found.seen, true};
}

std::optional<AppState::Imported> AppState::knownMedia(Id const& id) const
{
    MediaAsset const* const asset = m_project.asset(id);
    LoadedAsset const* const loaded = m_assets.find(id);
    auto const seen = m_seenFiles->find(id);
    if (!asset || !loaded || seen == m_seenFiles->end())
        return std::nullopt;
    return Imported{*asset, *loaded, seen->second, false};
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
        know(file);
        assets.push_back(file.asset);
    }
    if (!(project == m_project))
        commit(std::move(project), "Import Media", std::nullopt, Rebuild::no);
    return assets;
}

void AppState::know(Imported const& file)
{
    m_assets.insert(file.asset.id, file.loaded);
    m_seenFiles.edit()[file.asset.id] = file.seen;
    m_assetProblems.erase(file.asset.id);
}

Project AppState::withAsset(Imported const& file)
{
    Project project = m_project;
    know(file);
    if (file.isNew)
        project.assets.edit()[file.asset.id] = file.asset;
    return project;
}

} // namespace framewright
