// Opening and closing the project of an AppState.

#include "editor/app_state.h"
#include "model/file_url.h"
#include "tasks/on_worker.h"
#include "workspace/workspace.h"

namespace framewright {

namespace {

/// The project that was open last.
constexpr char const* openKey = "project.open";
/// How many starts in a row have died while opening it.
constexpr char const* attemptsKey = "project.openAttempts";
/// A project that ends the editor this often is not opened again by itself.
constexpr int mostAttempts = 3;
/// A project that is edited all the time is saved this often before it is left.
constexpr int mostSaves = 20;

} // namespace

QCoro::Task<void> AppState::startProject(std::filesystem::path file, Project project)
{
    // A new project has no file yet, and whatever lies there is not ours to replace.
    auto const write = [file, project] {
        return framewright::saveProject(file, project, std::nullopt);
    };
    SaveResult const result = co_await onWorker(write);
    if (result.wasChangedByOthers)
        throw ProjectFileError("There is a project at " + validUtf8(file.string()) + " already.");
    adopt(co_await readOnWorker(file), file);
}

QCoro::Task<void> AppState::openProject(std::filesystem::path file)
{
    adopt(co_await readOnWorker(file), file);
}

void AppState::reopenLastProject()
{
    auto const text = m_defaults.string(openKey);
    auto const url = text ? FileURL::parse(*text) : std::nullopt;
    if (!url)
        return;
    double const attempts = m_defaults.number(attemptsKey).value_or(0);
    if (attempts >= mostAttempts) {
        m_defaults.remove(attemptsKey);
        setErrorMessage("Framewright ended several times while opening " + validUtf8(url->path) +
                        "; it was not opened again.");
        return;
    }
    m_defaults.setNumber(attemptsKey, attempts + 1);
    try {
        adopt(readProject(url->path), url->path);
    } catch (ProjectFileError const& error) {
        setErrorMessage(error.what());
        m_defaults.remove(attemptsKey);
    }
}

void AppState::adopt(ReadProject read, std::optional<std::filesystem::path> const& file)
{
    m_saveTimer.stop();
    forgetAssets();
    m_project = std::move(read.decoded.document.project);
    m_assetRefs.clear();
    for (AssetRef& ref : read.decoded.document.assetRefs)
        m_assetRefs.emplace(ref.id, std::move(ref));
    m_projectFile = file;
    m_diskMark = std::move(read.mark);
    m_unknownKeys = std::move(read.decoded.unknownKeys);
    m_history.clear();
    m_isOpen = true;
    ++m_revision;
    m_currentTime = 0;
    select(std::nullopt);
    m_activeTrack.reset();
    setErrorMessage({});
    setDirty(false);
    reconcileSelection();
    // As a URL: settings are text, and a path may be any bytes.
    if (file)
        m_defaults.setString(openKey, FileURL{file->string()}.text());
    watchProject();
    // A start that dies from here on dies of the project's media.
    [](QPointer<AppState> self) -> QCoro::Task<void> {
        co_await self->loadAssets();
        if (self)
            self->m_defaults.remove(attemptsKey);
    }(this);
    emit compositionOutdated();
    emit projectChanged();
}

void AppState::watchProject()
{
    m_watcher.reset();
    if (!isWorkspaceProject())
        return;
    m_watcher = std::make_unique<FileWatcher>(*m_projectFile);
    connect(m_watcher.get(), &FileWatcher::changed, this, [this] { reloadProjectFromDisk(); });
    if (!m_watcher->isWatching())
        setErrorMessage("The project's folder can't be watched; changes by other programs are only "
                        "seen when the project is saved or opened.");
}

void AppState::followTo(std::filesystem::path file)
{
    // Media inside the project's folder moved with it.
    std::filesystem::path const before = m_projectFile->parent_path();
    std::map<Id, std::filesystem::path> moved;
    for (auto const& [id, asset] : *m_project.assets) {
        std::filesystem::path const inside =
            std::filesystem::path(asset.url.path).lexically_relative(before);
        if (!inside.empty() && *inside.begin() != "..")
            moved[id] = file.parent_path() / inside;
    }
    m_projectFile = std::move(file);
    m_defaults.setString(openKey, FileURL{m_projectFile->string()}.text());
    watchProject();
    if (moved.empty())
        return;
    moveAssets(moved);
    loadAssets();
}

QCoro::Task<Outcome<Done>> AppState::confirmDiscardingChanges(Changes changes)
{
    if (!m_isOpen)
        co_return Done();
    // Other commands may edit while it is saved; only a save that failed says why.
    for (int n = 0; n < mostSaves && isWorkspaceProject(); ++n) {
        bool const isSaved = co_await saveNow();
        if (isSaved || !m_errorMessage.empty())
            break;
    }
    if (!m_isDirty)
        co_return Done();
    if (changes == Changes::discard) {
        m_recovery.clear();
        co_return Done();
    }
    if (isWorkspaceProject())
        co_return Refusal{Reason::saveFailed, Subject::named(m_errorMessage)};
    co_return Refusal{Reason::unsavedChanges, Subject::named(projectName())};
}

QCoro::Task<Outcome<Done>> AppState::closeProject(Changes changes)
{
    auto const confirmed = co_await confirmDiscardingChanges(changes);
    if (confirmed)
        close();
    co_return confirmed;
}

void AppState::close()
{
    m_saveTimer.stop();
    m_watcher.reset();
    m_isOpen = false;
    m_project = Project();
    m_projectFile.reset();
    m_diskMark.reset();
    m_assetRefs.clear();
    m_unknownKeys.clear();
    m_history.clear();
    ++m_revision;
    forgetAssets();
    m_currentTime = 0;
    select(std::nullopt);
    m_activeTrack.reset();
    setErrorMessage({});
    setDirty(false);
    m_defaults.remove(openKey);
    emit assetsWereLoaded();
    emit compositionOutdated();
    emit projectChanged();
}

QCoro::Task<Outcome<Done>> AppState::restoreRecovery()
{
    if (!m_recovery.waiting())
        co_return Refusal{Reason::noRecoveryCopy};
    Recovery::Waiting const waiting = *m_recovery.waiting();
    ReadProject read = co_await readOnWorker(waiting.file);

    // Whatever stands in the project's own file by now is known, so that a save over it is refused
    // unless it is what we last saw there.
    std::optional<ContentMark> onDisk;
    if (waiting.origin) {
        try {
            ReadProject const there = co_await readOnWorker(*waiting.origin);
            onDisk = there.mark;
        } catch (ProjectFileError const&) {
            // It is gone or broken; the copy is then all there is.
        }
    }
    adopt(std::move(read), waiting.origin);
    m_diskMark = onDisk;
    m_recovery.adoptWaiting();
    setDirty(true);
    co_return Done();
}

Outcome<Done> AppState::discardRecovery()
{
    if (!m_recovery.waiting())
        return Refusal{Reason::noRecoveryCopy};
    m_recovery.discardWaiting();
    return Done();
}

} // namespace framewright
