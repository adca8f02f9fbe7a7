#pragma once

#include "cli/tool.h"
#include "editor/app_state.h"

#include <optional>

namespace framewright {

/// A clip as it is now, with a note when it is not where it was asked to go, and when it is a text
/// that is not seen for all of its time.
ToolResult clipResult(AppState const& editor, Id const& id,
                      std::optional<double> wantedStart = std::nullopt);

/// Adds a line to a reply; an empty note adds nothing.
void addNote(ToolResult& result, std::string const& note);

/// A sentence that names the texts which last longer than the picture; empty when none does.
std::string textsBeyondEndNote(Project const& project);

} // namespace framewright
