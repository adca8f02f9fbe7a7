// Saving the project of a ProjectFiles, and taking in what other programs write.

#include "editor/files/project_files.h"

#include "tasks/next_emission.h"
#include "tasks/on_worker.h"
#include "workspace/workspace_messages.h"

#include <QPointer>

#include <algorithm>

namespace framewright {

namespace {

using namespace std::chrono_literals;

constexpr std::chrono::milliseconds saveDelay = 1000ms;
/// Edits in quick succession put the save off, but no further than this after the first of them:
/// acknowledged work must not be at risk for as long as somebody keeps editing.
constexpr std::chrono::milliseconds longestDelay = 1250ms;
/// A file that others keep writing is saved over this many tries at most.
constexpr int mostTries = 20;

} // namespace

void ProjectFiles::scheduleSave()
{
    auto const waited = std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::steady_clock::now() - m_unsavedSince);
    m_saveTimer.start(std::clamp(longestDelay - waited, 0ms, saveDelay));
}

QCoro::Task<void> ProjectFiles::saveByItself()
{
    QPointer<ProjectFiles> const self(this);
    // No await inside a condition: GCC 12 destroys its task on the path not taken, too.
    if (isInWorkspace()) {
        try {
            co_await save();
        } catch (ProjectFileError const&) {
            // It is the problem now, and the changes go into a recovery copy.
        }
    }
    if (self && isDirty())
        co_await writeRecoveryCopy();
}

QCoro::Task<void> ProjectFiles::runningSaveEnded()
{
    QPointer<ProjectFiles> const self(this);
    while (self && m_isSaving)
        co_await NextEmission(this, &ProjectFiles::saveEnded);
}

QCoro::Task<void> ProjectFiles::save()
{
    QPointer<ProjectFiles> const self(this);
    auto const wanted = m_document.revision();
    auto const file = m_file;
    for (int n = 0; n < mostTries; ++n) {
        // A save under way may have begun before the last change; then one more follows it.
        co_await runningSaveEnded();
        if (!self || !file || m_file != file || (m_savedRevision && *m_savedRevision >= wanted))
            co_return;
        co_await writeToFile();
        if (self && !m_problem.empty() && isDirty())
            throw ProjectFileError(m_problem);
    }
    throw ProjectFileError("Could not save " + projectName() +
                           ": another program keeps writing its file.");
}

/// One attempt. What went wrong is the problem afterwards.
QCoro::Task<void> ProjectFiles::writeToFile()
{
    QPointer<ProjectFiles> const self(this);
    m_saveTimer.stop();
    m_isSaving = true;
    ++m_saveCount;
    auto const revision = m_document.revision();
    std::filesystem::path const file = *m_file;
    std::string problem;
    std::optional<SaveResult> result;
    auto const write = [file, project = m_document.project(), mark = m_diskMark,
                        refs = m_media.places().refs] {
        return saveProject(file, project, mark, refs);
    };
    try {
        result = co_await onWorker(write);
    } catch (ProjectFileError const& error) {
        problem = error.what();
    }
    if (!self)
        co_return;
    m_isSaving = false;
    if (file == m_file) {
        if (!result) {
            setProblem(problem);
        } else if (result->wasChangedByOthers) {
            for (ReadProject& found : result->found)
                takeOutsideEdit(std::move(found));
            co_await reloadFromDisk();
        } else {
            takeSaved(*result, revision);
        }
    }
    if (self)
        emit saveEnded();
}

void ProjectFiles::takeSaved(SaveResult const& result, std::uint64_t revision)
{
    m_diskMark = result.written;
    m_savedRevision = revision;
    setProblem({});
    m_unknownKeys.clear();
    m_recovery.clear();
    if (!isDirty())
        return;
    // Changes made meanwhile have a save of their own ahead; their second counts from now.
    m_unsavedSince = std::chrono::steady_clock::now();
    scheduleSave();
}

QCoro::Task<void> ProjectFiles::writeRecoveryCopy()
{
    QPointer<ProjectFiles> const self(this);
    m_recovery.rememberOrigin(m_file);
    auto const write = [file = m_recovery.file(), project = m_document.project()] {
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
        setProblem(m_problem.empty() ? problem : m_problem + " " + problem);
}

QCoro::Task<void> ProjectFiles::reloadFromDisk()
{
    QPointer<ProjectFiles> const self(this);
    std::filesystem::path const file = *m_file;
    try {
        std::optional<ReadProject> read;
        std::uint64_t saves = 0;
        // What is read beside a save may be what that save replaces or writes: an edit of ours, and
        // not the newest.
        do {
            co_await runningSaveEnded();
            if (!self || file != m_file)
                co_return;
            saves = m_saveCount;
            read.reset();
            read = co_await readOnWorker(file);
            if (!self || file != m_file)
                co_return;
        } while (saves != m_saveCount);
        if (read->mark != m_diskMark) {
            takeOutsideEdit(std::move(*read));
        } else {
            // As we know it: our own write, or a broken file that was put back.
            setProblem({});
            if (isDirty() && !m_isSaving)
                scheduleSave();
        }
    } catch (ProjectFileError const&) {
        // It may be half written yet: the watcher reports it again when it is whole.
        if (self && file == m_file)
            setProblem(WorkspaceMessage::invalidProject(projectName()));
    }
}

void ProjectFiles::takeOutsideEdit(ReadProject read)
{
    Project& project = read.decoded.document.project;
    AssetRefs refs = m_media.places().refs;
    for (AssetRef const& ref : read.decoded.document.assetRefs)
        refs[ref.id] = ref;
    m_media.setPlaces({m_media.places().projectFolder, std::move(refs)});
    m_diskMark = std::move(read.mark);
    m_unknownKeys = std::move(read.decoded.unknownKeys);
    setProblem({});
    if (!(project == m_document.project())) {
        bool const hasOtherMedia = !(project.assets == m_document.project().assets);
        m_document.commit(std::move(project), "Edit on Disk", Author::disk);
        if (hasOtherMedia)
            m_media.load();
    }
    // Memory and disk are the same again; what was not saved yet is one step back in the history.
    m_saveTimer.stop();
    m_savedRevision = m_document.revision();
}

void ProjectFiles::saveBeforeQuitting()
{
    m_saveTimer.stop();
    if (!isDirty())
        return;
    std::string problem =
        "“" + projectName() + "” has changes that are not saved; a recovery copy holds them.";
    try {
        if (isInWorkspace()) {
            SaveResult result =
                saveProject(*m_file, m_document.project(), m_diskMark, m_media.places().refs);
            for (ReadProject& found : result.found)
                takeOutsideEdit(std::move(found));
            if (result.wasChangedByOthers)
                takeOutsideEdit(readProject(*m_file));
            else
                takeSaved(result, m_document.revision());
            return;
        }
    } catch (ProjectFileError const& error) {
        problem = error.what();
    }
    m_recovery.rememberOrigin(m_file);
    try {
        Recovery::write(m_recovery.file(), m_document.project());
    } catch (ProjectFileError const& error) {
        problem += std::string(" ") + error.what();
    }
    setProblem(problem);
    throw ProjectFileError(problem);
}

} // namespace framewright
