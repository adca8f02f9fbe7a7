#include "editor/commands/project_commands.h"

#include "model/file_url.h"
#include "model/project_document.h"
#include "platform/atomic_file.h"
#include "tasks/on_worker.h"
#include "workspace/project_folders.h"
#include "workspace/workspace.h"

namespace framewright {

namespace {

using Path = std::filesystem::path;

bool isOpenProject(AppState const& state, Path const& file)
{
    auto const& open = state.files().file();
    return open && Workspace::canonicalPath(*open) == Workspace::canonicalPath(file);
}

/// The folder of a project of a workspace, saved when it is the open one.
QCoro::Task<Outcome<Path>> savedFolder(AppState& state, Path file)
{
    if (!Workspace::isProjectDocument(file))
        co_return Refusal{Reason::notInWorkspace};
    if (isOpenProject(state, file))
        co_await state.files().save();
    co_return file.parent_path();
}

Path withEnding(Path file)
{
    if (file.extension() != ".fwp")
        file += ".fwp";
    return file;
}

} // namespace

QCoro::Task<Outcome<Done>> startProject(AppState& state, ProjectToStart wanted, Unsaved unsaved)
{
    Project project = newProject(wanted.canvas.value_or(
        Workspace::canvas(wanted.workspace).value_or(AspectPreset::portrait)));
    project.brief = wanted.brief;
    // Before the folder is made: if the open project can't be left, no empty folder remains.
    auto const ready = co_await state.files().prepareToLeave(unsaved);
    if (!ready)
        co_return ready;
    auto const folder = createProjectFolder(wanted.workspace, wanted.name);
    if (!folder)
        co_return folder.refusal();
    co_await state.files().create(Workspace::projectFile(*folder), std::move(project));
    co_return Done();
}

QCoro::Task<Outcome<Done>> openProject(AppState& state, Path file, Unsaved unsaved)
{
    auto const ready = co_await state.files().prepareToLeave(unsaved);
    if (!ready)
        co_return ready;
    co_await state.files().open(file);
    co_await state.media().loaded();
    co_return Done();
}

QCoro::Task<Outcome<Done>> closeProject(AppState& state, Unsaved unsaved)
{
    co_return co_await state.files().close(unsaved);
}

QCoro::Task<Outcome<Done>> restoreRecovery(AppState& state, Unsaved unsaved)
{
    auto const ready = co_await state.files().prepareToLeave(unsaved);
    if (!ready)
        co_return ready;
    co_return co_await state.files().restoreRecovery();
}

QCoro::Task<Outcome<std::optional<Path>>> prepareToQuit(AppState& state, ExportSession& exports,
                                                        Unsaved unsaved)
{
    auto const ready = co_await state.files().prepareToLeave(unsaved);
    if (!ready)
        co_return ready.refusal();
    if (!exports.isRunning()) {
        if (unsaved == Unsaved::discard)
            state.files().abandonChanges();
        co_return std::optional<Path>();
    }
    Path const file = exports.file();
    if (unsaved == Unsaved::keep)
        co_return Refusal{Reason::exportStillRunning,
                          Subject::named(validUtf8(file.filename().string()))};
    co_await exports.cancel();
    state.files().abandonChanges();
    co_return std::optional(file);
}

QCoro::Task<Outcome<Done>> saveProject(AppState& state)
{
    if (!state.files().file())
        co_return Refusal{Reason::neverSaved};
    co_await state.files().save();
    co_return Done();
}

QCoro::Task<Outcome<Path>> saveProjectAs(AppState& state, Path file)
{
    file = withEnding(std::move(file));
    if (std::filesystem::exists(file))
        co_return Refusal{Reason::fileExists, Subject::named(validUtf8(file.string()))};
    if (!state.files().file()) {
        state.files().followTo(file);
        co_await state.files().save();
        co_return file;
    }
    auto const write = [file, project = state.project()] {
        // No references relative to a project folder: its paths are absolute.
        writeFileAtomically(file, ProjectDocument(project).data());
    };
    co_await onWorker(write);
    co_return file;
}

QCoro::Task<Outcome<Path>> renameProject(AppState& state, Path file, std::string name)
{
    auto const folder = co_await savedFolder(state, file);
    if (!folder)
        co_return folder;
    bool const isOpen = isOpenProject(state, file);
    auto const renamed = renameProject(*folder, name);
    if (renamed && isOpen)
        state.files().followTo(Workspace::projectFile(*renamed));
    co_return renamed;
}

QCoro::Task<Outcome<Path>> duplicateProject(AppState& state, Path file,
                                            std::optional<std::string> name)
{
    auto const folder = co_await savedFolder(state, file);
    if (!folder)
        co_return folder;
    auto const duplicate = [folder = *folder, name] {
        return name ? duplicateProject(folder, *name) : duplicateProject(folder);
    };
    co_return co_await onWorker(duplicate);
}

QCoro::Task<Outcome<Path>> deleteProject(AppState& state, Path file)
{
    auto const folder = co_await savedFolder(state, file);
    if (!folder)
        co_return folder;
    bool const isOpen = isOpenProject(state, file);
    auto const trash = [folder = *folder] { return trashProject(folder); };
    auto const trashed = co_await onWorker(trash);
    if (trashed && isOpen) {
        auto const closed = co_await state.files().close(Unsaved::discard);
        if (!closed)
            co_return closed.refusal();
    }
    co_return trashed;
}

} // namespace framewright
