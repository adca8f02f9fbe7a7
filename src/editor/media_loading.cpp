// The files behind the assets of an AppState's project: opened with it, and again when they change.

#include "editor/app_state.h"
#include "tasks/next_emission.h"
#include "tasks/on_worker.h"

#include <cmath>

namespace framewright {

namespace {

/// The length a project knows may be off by a frame or two, depending on who measured it.
constexpr double otherLength = 0.1;

/// The asset as its file is now.
MediaAsset asFound(MediaAsset asset, OpenedAsset const& found)
{
    if (asset.url.path != found.seen.file.string()) {
        asset.url.path = found.seen.file.string();
        asset.playbackURL = asset.url;
    }
    if (LoadedAsset const* const loaded = found.loaded()) {
        asset.kind = loaded->kind;
        if (std::abs(asset.duration - loaded->duration) > otherLength)
            asset.duration = loaded->duration;
    }
    return asset;
}

} // namespace

QCoro::Task<void> AppState::loadAssets()
{
    QPointer<AppState> const self(this);
    auto const round = ++m_loadingRound;
    m_assetProblems.clear();
    m_seenFiles = SeenFiles();
    m_isLoadingAssets = !m_project.assets->empty();
    if (!m_isLoadingAssets) {
        emit assetsWereLoaded();
        co_return;
    }
    auto const open = [assets = m_project.assets, places = mediaPlaces()] {
        return openAssets(assets, places);
    };
    std::vector<OpenedAsset> const opened = co_await onWorker(open);

    // Another project, or another state of this one, may have been opened meanwhile.
    if (!self || round != m_loadingRound)
        co_return;
    m_isLoadingAssets = false;
    takeOpened(opened);
    emit assetsWereLoaded();
}

void AppState::forgetAssets()
{
    ++m_loadingRound;
    m_isLoadingAssets = false;
    m_assets = AssetStore();
    m_assetProblems.clear();
    m_seenFiles = SeenFiles();
}

QCoro::Task<void> AppState::refreshAssets(Missing missing)
{
    QPointer<AppState> const self(this);
    co_await assetsLoaded();
    if (!self || m_project.assets->empty())
        co_return;
    std::set<Id> searched;
    if (missing == Missing::searched) {
        for (auto const& [id, problem] : m_assetProblems)
            searched.insert(id);
    }
    auto const round = m_loadingRound;
    auto const look = [assets = m_project.assets, seen = m_seenFiles, searched,
                       places = mediaPlaces()] {
        return openChangedAssets(assets, seen, searched, places);
    };
    std::vector<OpenedAsset> const opened = co_await onWorker(look);
    if (!self)
        co_return;
    if (round == m_loadingRound)
        takeOpened(opened);
    else
        co_await assetsLoaded(); // Everything was or is opened anew since.
}

MediaPlaces AppState::mediaPlaces() const
{
    return {m_projectFile ? m_projectFile->parent_path() : std::filesystem::path(), m_assetRefs};
}

void AppState::takeOpened(std::vector<OpenedAsset> const& opened)
{
    if (opened.empty())
        return;
    bool isFact = false;
    for (OpenedAsset const& found : opened) {
        MediaAsset const* const asset = m_project.asset(found.id);
        if (asset && asset->url.path != found.wanted)
            continue; // It has got another file while this one was looked into.
        m_seenFiles.edit()[found.id] = found.seen;
        if (LoadedAsset const* const loaded = found.loaded()) {
            m_assets.insert(found.id, *loaded);
            m_assetProblems.erase(found.id);
        } else {
            m_assets.erase(found.id);
            m_assetProblems[found.id] = std::get<std::string>(found.result);
        }
        isFact = isFact || (asset && !(asFound(*asset, found) == *asset));
    }
    auto const follow = [&](Project& project) {
        for (OpenedAsset const& found : opened) {
            MediaAsset const* const asset = project.asset(found.id);
            if (!asset || asset->url.path != found.wanted)
                continue;
            if (MediaAsset const now = asFound(*asset, found); !(now == *asset))
                project.assets.edit()[found.id] = now;
        }
    };
    if (isFact)
        correctEverywhere(follow);
    emit compositionOutdated();
}

void AppState::moveAssets(std::map<Id, std::filesystem::path> const& found)
{
    correctEverywhere([&](Project& project) {
        for (auto const& [id, file] : found) {
            if (!project.asset(id))
                continue;
            MediaAsset& asset = project.assets.edit()[id];
            asset.url.path = file.string();
            asset.playbackURL = asset.url;
        }
    });
}

void AppState::correctEverywhere(std::function<void(Project&)> const& correct)
{
    // Not a step of the user's: what a file is and where it lies are facts, also for every earlier
    // state.
    correct(m_project);
    m_history.forEachProject(correct);
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
