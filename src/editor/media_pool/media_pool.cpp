#include "editor/media_pool/media_pool.h"

#include "editor/media_pool/internal/asset_opening.h"
#include "media/media_error.h"
#include "model/file_url.h"
#include "tasks/next_emission.h"
#include "tasks/on_worker.h"

#include <QPointer>

#include <cmath>
#include <set>

namespace framewright {

namespace {

/// A stored duration that differs by no more is kept: other programs measure differently. Seconds.
constexpr double durationTolerance = 0.1;

/// The asset as its file is now.
MediaAsset asFound(MediaAsset asset, OpenedAsset const& found)
{
    if (asset.url.path != found.seen.file.string()) {
        asset.url.path = found.seen.file.string();
        asset.playbackURL = asset.url;
    }
    if (LoadedAsset const* const loaded = found.loaded()) {
        asset.kind = loaded->kind;
        if (std::abs(asset.duration - loaded->duration) > durationTolerance)
            asset.duration = loaded->duration;
    }
    return asset;
}

/// Whether the project still wants what was opened for this asset.
bool isWanted(Project const& project, OpenedAsset const& found)
{
    MediaAsset const* const asset = project.asset(found.id);
    return !asset || asset->url.path == found.wanted;
}

/// A file as it was found, with its real path. Throws MediaError.
std::pair<FileIdentity, LoadedAsset> probed(std::filesystem::path const& file)
{
    FileIdentity seen = FileIdentity::of(file);
    LoadedAsset loaded = openMedia(file);
    std::error_code failed;
    seen.file = loaded.file = std::filesystem::canonical(file, failed);
    if (failed) // Removed since.
        throw MediaError(MediaError::Cause::missing,
                         validUtf8(file.filename().string()) + " does not exist.");
    return {seen, loaded};
}

} // namespace

MediaPool::MediaPool(Document& document, QObject* parent) : QObject(parent), m_document(document)
{
    connect(&document, &Document::changed, this, &MediaPool::follow);
}

MediaPool::~MediaPool() = default;

void MediaPool::follow(ProjectChange const& change)
{
    using Kind = ProjectChange::Kind;
    if (change.kind == Kind::opened || change.kind == Kind::closed)
        forget();
}

void MediaPool::forget()
{
    ++m_round;
    m_isLoading = false;
    m_store = AssetStore();
    m_problems.clear();
    m_seen = SeenFiles();
    emit loadEnded();
}

QCoro::Task<void> MediaPool::load()
{
    QPointer<MediaPool> const self(this);
    auto const round = ++m_round;
    m_problems.clear();
    m_seen = SeenFiles();
    auto const assets = m_document.project().assets;
    m_isLoading = !assets->empty();
    if (!m_isLoading) {
        emit loadEnded();
        co_return;
    }
    auto const open = [assets, places = m_places] { return openAssets(assets, places); };
    std::vector<OpenedAsset> const opened = co_await onWorker(open);

    if (!self || round != m_round)
        co_return;
    m_isLoading = false;
    take(opened);
    emit loadEnded();
}

QCoro::Task<void> MediaPool::loaded()
{
    QPointer<MediaPool> const self(this);
    while (self && m_isLoading)
        co_await NextEmission(this, &MediaPool::loadEnded);
}

QCoro::Task<void> MediaPool::refresh(Missing missing)
{
    QPointer<MediaPool> const self(this);
    co_await loaded();
    if (!self || m_document.project().assets->empty())
        co_return;
    std::set<Id> searched;
    if (missing == Missing::searched) {
        for (auto const& [id, problem] : m_problems)
            searched.insert(id);
    }
    auto const round = m_round;
    auto const look = [assets = m_document.project().assets, seen = m_seen, searched,
                       places = m_places] {
        return openChangedAssets(assets, seen, searched, places);
    };
    std::vector<OpenedAsset> const opened = co_await onWorker(look);
    if (!self)
        co_return;
    if (round == m_round)
        take(opened);
    else
        co_await loaded(); // It opens everything.
}

void MediaPool::take(std::vector<OpenedAsset> const& opened)
{
    if (opened.empty())
        return;
    bool hasNewFacts = false;
    for (OpenedAsset const& found : opened) {
        if (!isWanted(m_document.project(), found))
            continue;
        m_seen.edit()[found.id] = found.seen;
        if (LoadedAsset const* const loaded = found.loaded()) {
            m_store.insert(found.id, *loaded);
            m_problems.erase(found.id);
        } else {
            m_store.erase(found.id);
            m_problems[found.id] = std::get<std::string>(found.result);
        }
        MediaAsset const* const asset = m_document.project().asset(found.id);
        hasNewFacts = hasNewFacts || (asset && !(asFound(*asset, found) == *asset));
    }
    if (hasNewFacts) {
        m_document.correctFacts([&](Project& project) {
            for (OpenedAsset const& found : opened) {
                MediaAsset const* const asset = project.asset(found.id);
                if (!asset || !isWanted(project, found))
                    continue;
                if (MediaAsset const now = asFound(*asset, found); !(now == *asset))
                    project.assets.edit()[found.id] = now;
            }
        });
    }
    emit changed();
}

void MediaPool::relocate(std::map<Id, std::filesystem::path> const& found)
{
    m_document.correctFacts([&](Project& project) {
        for (auto const& [id, file] : found) {
            if (!project.asset(id))
                continue;
            MediaAsset& asset = project.assets.edit()[id];
            asset.url.path = file.string();
            asset.playbackURL = asset.url;
        }
    });
}

QCoro::Task<ProbedFile> MediaPool::probe(std::filesystem::path file)
{
    auto const look = [file] { return probed(file); };
    auto const [seen, loaded] = co_await onWorker(look);

    std::string const path = seen.file.string();
    for (auto const& [id, asset] : *m_document.project().assets) {
        if (asset.url.path != path)
            continue;
        OpenedAsset const opened{id, path, seen, loaded};
        take(std::vector<OpenedAsset>(1, opened));
        co_return *known(opened.id);
    }
    MediaAsset asset;
    asset.id = Id::random();
    asset.url.path = path;
    asset.playbackURL = asset.url;
    asset.kind = loaded.kind;
    asset.duration = loaded.duration;
    asset.displayName = validUtf8(seen.file.filename().string());
    co_return ProbedFile{std::move(asset), loaded, seen, true};
}

std::optional<ProbedFile> MediaPool::known(Id const& id) const
{
    MediaAsset const* const asset = m_document.project().asset(id);
    LoadedAsset const* const loaded = m_store.find(id);
    auto const seen = m_seen->find(id);
    if (!asset || !loaded || seen == m_seen->end())
        return std::nullopt;
    return ProbedFile{*asset, *loaded, seen->second, false};
}

void MediaPool::remember(ProbedFile const& file)
{
    m_store.insert(file.asset.id, file.loaded);
    m_seen.edit()[file.asset.id] = file.seen;
    m_problems.erase(file.asset.id);
}

std::optional<std::string> MediaPool::problem(Id const& id) const
{
    auto const found = m_problems.find(id);
    return found == m_problems.end() ? std::nullopt : std::optional(found->second);
}

} // namespace framewright
