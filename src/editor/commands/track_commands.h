#pragma once

#include "editor/commands/editing.h"
#include "model/track_editing.h"

namespace framewright {

/// "Add Track"; gives its id, which is chosen here.
Outcome<Id> addTrack(Editing editing, NewTrack track);

/// "Delete Track".
Outcome<Project> removeTrack(Editing editing, Id const& trackID);

/// "Move Track": down the list by `offset` places, up if negative.
Outcome<Project> moveTrack(Editing editing, Id const& trackID, int offset);

/// "Change Track".
Outcome<Project> changeTrack(Editing editing, Id const& trackID, TrackChanges const& changes);

/// "Change Ratio to 1:1".
void changeAspect(Editing editing, AspectPreset aspect);

} // namespace framewright
