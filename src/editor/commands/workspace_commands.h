#pragma once

#include "editor/app_state.h"
#include "model/outcome.h"

#include <filesystem>
#include <string>

namespace framewright {

// All throw WorkspaceError when the disk refuses.

/// Makes a folder the current workspace, creating its marker if needed. Gives the folder.
Outcome<std::filesystem::path> setUpWorkspace(AppState& state, std::filesystem::path const& folder);

/// Says what gets made in a workspace. Words that mean a canvas ("reels") choose the one that new
/// projects start with.
void describeWorkspace(std::filesystem::path const& workspace, std::string const& about);

/// Adds a folder whose files are used in place. Refused when there is no such folder.
Outcome<Done> addMediaFolder(std::filesystem::path const& workspace,
                             std::filesystem::path const& folder);

/// Whether a folder is removed although the open project uses its files.
enum class InUse { refuse, removeAnyway };

/// Takes a folder off the list; its files stay. Refused when it is not on the list, or in use.
Outcome<Done> removeMediaFolder(AppState const& state, std::filesystem::path const& workspace,
                                std::filesystem::path const& folder, InUse inUse);

} // namespace framewright
