#pragma once

#include "editor/commands/clip_changing_commands.h"
#include "editor/commands/clip_placing_commands.h"

namespace framewright {

// The commands of the menu and the keyboard, for the selected clips. Refused when none is.

/// Cuts the selected clip at the playhead, else the clip of the active track that is there.
Outcome<SplitClip> splitAtPlayhead(Editing editing);
Outcome<Removed> deleteSelection(Editing editing);
Outcome<PlacedClips> duplicateSelection(Editing editing);
Outcome<Done> copySelection(Editing editing);
Outcome<Nudged> nudgeSelection(Editing editing, double seconds);

/// "Transform Clip", of the clip selected first.
Outcome<Project> setSelectedTransform(Editing editing, ClipTransform const& transform);
Outcome<Project> resetSelectedTransform(Editing editing);

/// Moves the playhead. Refused for a time before 0.
Outcome<Done> seek(Editing editing, double time);

/// The name of the step undone or redone. Refused when there is none.
Outcome<std::string> undo(Editing editing);
Outcome<std::string> redo(Editing editing);

} // namespace framewright
