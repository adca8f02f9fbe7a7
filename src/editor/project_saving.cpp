// Saving the project of an AppState, and taking in what others write.

#include "editor/app_state.h"
#include "tasks/next_emission.h"
#include "tasks/on_worker.h"
#include "workspace/workspace_messages.h"

#include <algorithm>

namespace framewright {

namespace {

using namespace std::chrono_literals;

constexpr std::chrono::milliseconds saveDelay = 1000ms;
/// Edits that follow each other closely put the save off, but no further than this after the first
/// of them: what was acknowledged must not be at risk for as long as somebody keeps editing.
constexpr std::chrono::milliseconds longestDelay = 1250ms;

} // namespace

void AppState::scheduleSave()
{
    auto const waited = std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::steady_clock::now() - m_unsavedSince);
    m_saveTimer.start(std::clamp(longestDelay - waited, 0ms, saveDelay));
}

QCoro::Task<void> AppState::saveOrAutosave()
{
    QPointer<AppState> const self(this);
    if (!m_isDirty)
        co_return;
    // No await stands inside a condition: GCC 12 destroys its task on the way not taken, too.
    if (isWorkspaceProject())
        co_await saveNow();
    // What has no place of its own yet, or can't be written there, is kept all the same.
    if (self && m_isDirty)
        co_await autosave();
}

QCoro::Task<void> AppState::saveEnded()
{
    QPointer<AppState> const self(this);
    while (self && m_isSaving)
        co_await NextEmission(this, &AppState::saved);
}

QCoro::Task<bool> AppState::saveNow()
{
    QPointer<AppState> const self(this);
    // A save under way may have begun before the last change; then one more follows it.
    co_await saveEnded();
    if (self && m_isDirty && isWorkspaceProject())
        co_await saveToFile();
    co_return self && !m_isDirty;
}

QCoro::Task<bool> AppState::saveProject()
{
    co_await saveEnded();
    if (m_isDirty && m_projectFile)
        co_await saveToFile();
    co_return !m_isDirty;
}

QCoro::Task<bool> AppState::saveToFile()
{
    QPointer<AppState> const self(this);
    m_saveTimer.stop();
    m_isSaving = true;
    ++m_saveCount;
    auto const revision = m_revision;
    std::filesystem::path const file = *m_projectFile;
    std::string problem;
    std::optional<SaveResult> result;
    auto const write = [file, project = m_project, mark = m_diskMark, refs = m_assetRefs] {
        return framewright::saveProject(file, project, mark, refs);
    };
    try {
        result = co_await onWorker(write);
    } catch (ProjectFileError const& error) {
        problem = error.what();
    }
    if (!self)
        co_return false;
    m_isSaving = false;
    if (file == m_projectFile) {
        if (!result)
            setErrorMessage(problem);
        else if (result->wasChangedByOthers) {
            for (ReadProject& found : result->found)
                takeOutsideEdit(std::move(found));
            co_await reloadProjectFromDisk();
        } else
            takeSaveResult(*result, revision);
    }
    if (!self)
        co_return false;
    emit saved();
    co_return !m_isDirty;
}

void AppState::takeSaveResult(SaveResult const& result, std::uint64_t revision)
{
    m_diskMark = result.written;
    setErrorMessage({});
    m_unknownKeys.clear();
    m_recovery.clear();
    if (m_revision == revision) {
        setDirty(false);
        return;
    }
    // What came meanwhile has a save of its own ahead; its second counts from now.
    m_unsavedSince = std::chrono::steady_clock::now();
    scheduleSave();
}

QCoro::Task<void> AppState::autosave()
{
    QPointer<AppState> const self(this);
    m_recovery.rememberOrigin(m_projectFile);
    auto const write = [file = m_recovery.file(), project = m_project] {
        Recovery::write(file, project);
    };
    std::string problem;
    try {
        co_await onWorker(write);
    } catch (ProjectFileError const& error) {
        problem = error.what();
    }
    if (!self)
        co_return;
    m_unsavedSince = std::chrono::steady_clock::now();
    if (!problem.empty())
        setErrorMessage(m_errorMessage.empty() ? problem : m_errorMessage + " " + problem);
}

QCoro::Task<void> AppState::reloadProjectFromDisk()
{
    QPointer<AppState> const self(this);
    std::filesystem::path const file = *m_projectFile;
    try {
        std::optional<ReadProject> read;
        std::uint64_t saves = 0;
        // What is read beside a save may be what that save replaces or writes: an edit of ours, and
        // not the newest.
        do {
            co_await saveEnded();
            if (!self || file != m_projectFile)
                co_return;
            saves = m_saveCount;
            read.reset();
            read = co_await readOnWorker(file);
            if (!self || file != m_projectFile)
                co_return;
        } while (saves != m_saveCount);
        if (read->mark != m_diskMark) {
            takeOutsideEdit(std::move(*read));
        } else {
            // As we know it: our own write, or what was broken has been put back.
            setErrorMessage({});
            if (m_isDirty && !m_isSaving)
                scheduleSave();
        }
    } catch (ProjectFileError const&) {
        // It may be half written yet: when it is whole, the watcher tells again.
        if (self && file == m_projectFile)
            setErrorMessage(WorkspaceMessage::invalidProject(projectName()));
    }
}

void AppState::takeOutsideEdit(ReadProject read)
{
    Project& project = read.decoded.document.project;
    for (AssetRef const& ref : read.decoded.document.assetRefs)
        m_assetRefs[ref.id] = ref;
    m_diskMark = std::move(read.mark);
    m_unknownKeys = std::move(read.decoded.unknownKeys);
    setErrorMessage({});
    if (!(project == m_project)) {
        bool const hasOtherMedia = !(project.assets == m_project.assets);
        commit(std::move(project), "Edit on Disk");
        if (hasOtherMedia)
            loadAssets();
    }
    // Memory and disk are one again; what was not saved yet is a step back in the history.
    m_saveTimer.stop();
    setDirty(false);
}

bool AppState::saveBeforeQuitting()
{
    m_saveTimer.stop();
    if (!m_isDirty)
        return true;
    try {
        if (!isWorkspaceProject()) {
            m_recovery.rememberOrigin(m_projectFile);
            Recovery::write(m_recovery.file(), m_project);
            return false;
        }
        SaveResult result =
            framewright::saveProject(*m_projectFile, m_project, m_diskMark, m_assetRefs);
        for (ReadProject& found : result.found)
            takeOutsideEdit(std::move(found));
        if (result.wasChangedByOthers)
            takeOutsideEdit(readProject(*m_projectFile));
        else
            takeSaveResult(result, m_revision);
    } catch (ProjectFileError const& error) {
        setErrorMessage(error.what());
        m_recovery.rememberOrigin(m_projectFile);
        try {
            Recovery::write(m_recovery.file(), m_project);
        } catch (ProjectFileError const& second) {
            setErrorMessage(m_errorMessage + " " + second.what());
        }
    }
    return !m_isDirty;
}

} // namespace framewright
