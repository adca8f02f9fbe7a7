#pragma once

#include "model/aspect_preset.h"
#include "model/outcome.h"
#include "platform/user_defaults.h"

#include <chrono>
#include <filesystem>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace framewright {

/// A workspace couldn't be read or written. `what()` is the whole sentence the user reads.
class WorkspaceError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The folder that holds a user's videos, settings and caches.
///
///     workspace.json                 marks the folder and holds its metadata
///     settings/                      transcription.json, caption-styles.json, text-styles.json
///     projects/NAME/project.json     with thumbnail.png, media/ and exports/ beside it
///     cache/frames/, cache/transcripts/
namespace Workspace {

using Path = std::filesystem::path;

// Recognising one

/// Whether the folder holds workspace.json, library.json (the mark's older name) or the guide.
bool isWorkspace(Path const& folder);

/// Whether this is a workspace's projects/NAME/project.json, by its path alone.
bool isProjectDocument(Path const& file);

/// The nearest workspace at or above a folder.
std::optional<Path> findWorkspace(Path const& folder);

/// The form in which paths are compared: absolute, without "." and "..", links resolved as far
/// as the path exists, without a leading "/private". For comparing only: it may not lead to the
/// file.
std::string canonicalPath(Path const& path);

/// Whether a file is in a folder, at any depth, or is that folder; by their canonical paths.
bool isInside(Path const& file, Path const& folder);

/// The folder itself, when a workspace can be opened there. Refused when it is gone or not a
/// workspace; throws WorkspaceError when it can't be read or its workspace.json doesn't decode.
Outcome<Path> openable(Path const& folder);

// Creating one

/// Makes a folder a workspace: its workspace.json (version 1, `now` as the time of creation) and
/// the empty folders of a workspace. Creates the folder too; existing files stay
/// unchanged, workspace.json included. Throws WorkspaceError.
void setUp(Path const& folder,
           std::chrono::system_clock::time_point now = std::chrono::system_clock::now());

/// Sets up a new workspace in a new folder `name` inside `parent`. A workspace that already
/// exists is used as it is; refused for an unusable name, and when another file or folder of that
/// name is there. Throws WorkspaceError.
Outcome<Path> create(Path const& parent, std::string_view name);

// Which one is current

/// The current workspace; nothing when none was chosen yet. It may no longer exist.
std::optional<Path> url(UserDefaults const& defaults);
void setUrl(std::optional<Path> const& folder, UserDefaults& defaults);

/// The workspaces last used, most recent first, each once. They may no longer exist.
std::vector<Path> recent(UserDefaults const& defaults);

/// Puts a workspace first among the recent ones, of which 8 are kept.
void remember(Path const& folder, UserDefaults& defaults);

// Its metadata
//
// All of it is in workspace.json. The readers take a missing key, and a missing file, as
// absent. The writers change one key and keep all others, known or not; they write nothing when
// nothing changes. All throw WorkspaceError when the file does not decode, and leave it
// unchanged.

/// The folders whose files are used in place, absolute.
std::vector<Path> mediaFolders(Path const& workspace);
/// Keeps the order; duplicates are dropped.
void setMediaFolders(std::vector<Path> const& folders, Path const& workspace);

/// What gets made here, in a sentence.
std::optional<std::string> about(Path const& workspace);
void setAbout(std::optional<std::string> const& about, Path const& workspace);

/// The canvas that new projects start with, when one was chosen.
std::optional<AspectPreset> canvas(Path const& workspace);
void setCanvas(std::optional<AspectPreset> canvas, Path const& workspace);

/// Names the app has recorded for this workspace.
std::set<std::string> seen(Path const& workspace);
void setSeen(std::set<std::string> const& names, Path const& workspace);

/// Whether the workspace has ever held videos.
bool hadVideos(Path const& workspace);
void setHadVideos(bool hadVideos, Path const& workspace);

// Where things are

Path markerFile(Path const& workspace);
Path projectsFolder(Path const& workspace);
Path projectFolder(Path const& workspace, std::string_view name);
Path settingsFolder(Path const& workspace);
Path framesCache(Path const& workspace);
Path transcriptsCache(Path const& workspace);

Path projectFile(Path const& projectFolder);
Path thumbnailFile(Path const& projectFolder);
Path exportsFolder(Path const& projectFolder);
Path mediaFolder(Path const& projectFolder);

/// `name`, or `name` and the first number from 2 on, so that no entry of `folder` has that name
/// in any case: "Hook", "Hook 2", "Hook 3". A missing folder has no entries. Throws
/// WorkspaceError when the folder can't be listed.
std::string uniqueName(std::string_view name, Path const& folder);

} // namespace Workspace

} // namespace framewright
