#include "editor/commands/text_commands.h"

#include "editor/commands/internal/carry_out.h"

namespace framewright {

Outcome<Placed> addText(Editing editing, NewText text)
{
    text.id = Id::random();
    text.newTrackID = Id::random();
    return carryOut(editing, addText(editing.project(), text), "Add Text");
}

Outcome<Project> changeText(Editing editing, Id const& clipID, TextChanges const& changes)
{
    return carryOut(editing, changeText(editing.project(), clipID, changes), "Edit Text");
}

} // namespace framewright
