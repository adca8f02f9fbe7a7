#pragma once

#include "cli/tool.h"
#include "editor/app_state.h"

#include <optional>

namespace framewright {

/// The clip after an edit, with a note when it is not at the requested time, or is a text that is
/// not visible for all of its time.
ToolResult clipResult(AppState const& editor, Id const& id,
                      std::optional<double> wantedStart = std::nullopt);

/// Adds a line to a reply; an empty note adds nothing.
void addNote(ToolResult& result, std::string const& note);

/// A sentence that names the texts that last longer than the footage; empty when none does.
std::string textsBeyondEndNote(Project const& project);

} // namespace framewright
