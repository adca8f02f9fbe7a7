#pragma once

#include "editor/app_state.h"
#include "editor/export_session.h"

#include <QCoro/QCoroTask>

#include <filesystem>
#include <optional>
#include <string>

namespace framewright {

using Unsaved = ProjectFiles::Unsaved;

/// A project to start in a workspace.
struct ProjectToStart {
    std::filesystem::path workspace;
    std::string name;                        ///< A name already taken gets a number.
    std::optional<AspectPreset> canvas = {}; ///< Else the workspace's, else portrait.
    std::optional<std::string> brief = {};
};

// Leaving the open project: what can be saved is saved first. Refused when changes remain that are
// not to be discarded. All throw ProjectFileError or WorkspaceError when the disk refuses.

QCoro::Task<Outcome<Done>> startProject(AppState& state, ProjectToStart project, Unsaved unsaved);

/// Ends when the project's media are opened as well.
QCoro::Task<Outcome<Done>> openProject(AppState& state, std::filesystem::path file,
                                       Unsaved unsaved);
QCoro::Task<Outcome<Done>> closeProject(AppState& state, Unsaved unsaved);
QCoro::Task<Outcome<Done>> restoreRecovery(AppState& state, Unsaved unsaved);

/// Prepares the editor's end. While an export runs it is refused, unless unsaved changes may be
/// discarded: then the export is cancelled, and its file is returned.
QCoro::Task<Outcome<std::optional<std::filesystem::path>>>
prepareToQuit(AppState& state, ExportSession& exports, Unsaved unsaved);

/// Saves the project to its own file. Refused for one that was never saved.
QCoro::Task<Outcome<Done>> saveProject(AppState& state);

/// Writes an exact copy that can be opened anywhere, as FILE.fwp; for a project that was never
/// saved, FILE.fwp becomes its file. Gives the file written. Refused when it exists already.
QCoro::Task<Outcome<std::filesystem::path>> saveProjectAs(AppState& state,
                                                          std::filesystem::path file);

// Whole projects of a workspace, by their document's file. The open project is saved first. Refused
// for projects elsewhere.

/// Gives the new folder.
QCoro::Task<Outcome<std::filesystem::path>>
renameProject(AppState& state, std::filesystem::path file, std::string name);

/// Gives the copy's folder. Without a name it is the project's and a number.
QCoro::Task<Outcome<std::filesystem::path>>
duplicateProject(AppState& state, std::filesystem::path file, std::optional<std::string> name);

/// Moves a project to the desktop's trash, closing it when it is open. Gives its place there; empty
/// when the desktop does not say.
QCoro::Task<Outcome<std::filesystem::path>> deleteProject(AppState& state,
                                                          std::filesystem::path file);

} // namespace framewright
