// Opening, saving and reloading the project of an AppState.

#include "editor/app_state.h"
#include "editor/worker_task.h"

#include "model/file_url.h"

#include <QCoro/QCoroSignal>

#include <algorithm>

namespace framewright {

namespace {

using namespace std::chrono_literals;

constexpr auto saveDelay = 1000ms;
/// Edits that follow each other closely put the save off, but no further than this after the first
/// of them: what was acknowledged must not be at risk for as long as somebody keeps editing.
constexpr auto longestDelay = 1250ms;

constexpr char const* openProjectKey = "project.open";

} // namespace

QCoro::Task<void> AppState::startProject(std::filesystem::path file, Project project)
{
    co_await saveNow();
    // A new project has no file yet, and whatever lies there is not ours to replace.
    SaveResult const result = co_await onWorker(
        [file, project] { return saveProject(file, project, std::nullopt); });
    if (result.wasChangedByOthers)
        throw ProjectFileError("There is a project at " + validUtf8(file.string()) + " already.");
    adopt(co_await onWorker([file] { return readProject(file); }), file);
}

QCoro::Task<void> AppState::openProject(std::filesystem::path file)
{
    ReadProject read = co_await onWorker([file] { return readProject(file); });
    co_await saveNow();
    adopt(std::move(read), file);
}

void AppState::reopenLastProject()
{
    auto const path = m_defaults.string(openProjectKey);
    if (!path)
        return;
    auto const url = FileURL::parse(*path);
    if (!url)
        return;
    try {
        adopt(readProject(url->path), url->path);
    } catch (ProjectFileError const& error) {
        setErrorMessage(error.what());
    }
}

void AppState::adopt(ReadProject read, std::filesystem::path const& file)
{
    m_saveTimer.stop();
    m_project = std::move(read.decoded.document.project);
    m_projectFile = file;
    m_diskMark = std::move(read.mark);
    m_unknownKeys = std::move(read.decoded.unknownKeys);
    m_history.clear();
    m_isOpen = true;
    ++m_revision;
    m_currentTime = 0;
    m_selectedClip.reset();
    m_activeTrack.reset();
    setErrorMessage({});
    setDirty(false);
    reconcileSelection();
    // As a URL: settings are text, and a path may be any bytes.
    m_defaults.setString(openProjectKey, FileURL{file.string()}.text());
    loadAssets();
    emit compositionOutdated();
    emit projectChanged();
}

void AppState::scheduleSave()
{
    if (!m_projectFile)
        return;
    auto const waited = std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::steady_clock::now() - m_dirtySince);
    m_saveTimer.start(std::clamp(longestDelay - waited, 0ms, std::chrono::milliseconds(saveDelay)));
}

QCoro::Task<bool> AppState::saveNow()
{
    m_saveTimer.stop();
    // A save under way may have begun before the last change; then one more follows it.
    while (m_isSaving)
        co_await qCoro(this, &AppState::saved);
    if (m_isDirty && m_projectFile)
        co_await saveWorkspaceProject();
    co_return !m_isDirty;
}

QCoro::Task<bool> AppState::saveWorkspaceProject()
{
    if (m_isSaving || !m_isDirty || !m_projectFile)
        co_return !m_isDirty;
    m_isSaving = true;
    auto const revision = m_revision;
    std::filesystem::path const file = *m_projectFile;
    try {
        SaveResult const result =
            co_await onWorker([file, project = m_project, mark = m_diskMark] {
                return saveProject(file, project, mark);
            });
        if (file == m_projectFile)
            takeSaveResult(result, revision);
    } catch (ProjectFileError const& error) {
        setErrorMessage(error.what());
    }
    m_isSaving = false;
    emit saved();
    co_return !m_isDirty;
}

void AppState::takeSaveResult(SaveResult const& result, std::uint64_t revision)
{
    if (result.wasChangedByOthers) {
        takeOutsideEdit();
        return;
    }
    m_diskMark = result.written;
    setErrorMessage({});
    m_unknownKeys.clear();
    if (m_revision == revision) {
        setDirty(false);
    } else {
        // What came meanwhile has a save of its own ahead; its second counts from now.
        m_dirtySince = std::chrono::steady_clock::now();
        scheduleSave();
    }
}

void AppState::takeOutsideEdit()
{
    try {
        ReadProject read = readProject(*m_projectFile);
        m_diskMark = std::move(read.mark);
        m_unknownKeys = std::move(read.decoded.unknownKeys);
        commit(std::move(read.decoded.document.project), "Edit on Disk");
        loadAssets();
    } catch (ProjectFileError const&) {
        setErrorMessage(projectName() + "'s project.json on disk is not a valid project; the app "
                                        "keeps its own copy.");
    }
}

bool AppState::saveBeforeQuitting()
{
    m_saveTimer.stop();
    if (!m_isDirty || !m_projectFile)
        return !m_isDirty;
    try {
        auto const revision = m_revision;
        takeSaveResult(saveProject(*m_projectFile, m_project, m_diskMark), revision);
        m_saveTimer.stop();
        if (m_isDirty) // What others wrote was taken in first; it is what lies on disk now.
            takeSaveResult(saveProject(*m_projectFile, m_project, m_diskMark), m_revision);
        m_saveTimer.stop();
    } catch (ProjectFileError const& error) {
        setErrorMessage(error.what());
    }
    return !m_isDirty;
}

} // namespace framewright
