#pragma once

#include "editor/app_state.h"
#include "model/outcome.h"

namespace framewright {

// What people and agents can do with the open project. Each command is a function; it checks every
// precondition of its edit, fills in what was not given, and makes one step of the history under
// the name of its menu command. A refused one has changed nothing. An edit that leaves the project
// as it was succeeds, but is no step: there is nothing to undo.
//
// Commands take ids. A command that waits resumes with the objects its ids named when it began, or
// is refused when they are gone.

/// What a command changes, and who asked for it. Cheap to copy; the state must outlive the command.
struct Editing {
    AppState& state;
    Author author;

    Project const& project() const { return state.project(); }
};

} // namespace framewright
