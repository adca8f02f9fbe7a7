#pragma once

#include "cli/tool.h"
#include "editor/app_state.h"

#include <optional>

namespace framewright {

/// The clip, on a track that may be edited. Throws ToolError when it is locked.
ClipPlace editableClip(AppState const& editor, Id const& id);

/// A clip as it now stands, with a note when it is not where it was asked to go.
ToolResult clipResult(AppState const& editor, Id const& id,
                      std::optional<double> wantedStart = std::nullopt);

} // namespace framewright
