#pragma once

#include "cli/tool.h"
#include "editor/app_state.h"

#include <filesystem>

namespace framewright {

/// The workspace of a command: the one around its working folder, which becomes the current one,
/// else the current one. Throws ToolError.
std::filesystem::path workspaceOf(ToolArgs const& args, AppState& editor);

/// The file of the project that an option names: by its name in the workspace, in any case, or by
/// the path of its file or folder. Throws ToolError.
std::filesystem::path fileOfProject(ToolArgs const& args, Param<Text> const& project,
                                    AppState& editor);

} // namespace framewright
