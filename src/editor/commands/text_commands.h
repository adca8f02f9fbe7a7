#pragma once

#include "editor/commands/editing.h"
#include "model/text_editing.h"

namespace framewright {

/// "Add Text": its ids are chosen here.
Outcome<Placed> addText(Editing editing, NewText text);

/// "Edit Text".
Outcome<Project> changeText(Editing editing, Id const& clipID, TextChanges const& changes);

} // namespace framewright
