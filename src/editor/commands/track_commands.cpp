#include "editor/commands/track_commands.h"

#include "editor/commands/internal/carry_out.h"

namespace framewright {

Outcome<Id> addTrack(Editing editing, NewTrack track)
{
    track.id = Id::random();
    auto const added = carryOut(editing, addTrack(editing.project(), track), "Add Track");
    if (!added)
        return added.refusal();
    return track.id;
}

Outcome<Project> removeTrack(Editing editing, Id const& trackID)
{
    return carryOut(editing, removeTrack(editing.project(), trackID), "Delete Track");
}

Outcome<Project> moveTrack(Editing editing, Id const& trackID, int offset)
{
    return carryOut(editing, moveTrack(editing.project(), trackID, offset), "Move Track");
}

Outcome<Project> changeTrack(Editing editing, Id const& trackID, TrackChanges const& changes)
{
    return carryOut(editing, changeTrack(editing.project(), trackID, changes), "Change Track");
}

void changeAspect(Editing editing, AspectPreset aspect)
{
    if (aspect == editing.project().aspect)
        return;
    editing.state.commit(changeAspect(editing.project(), aspect),
                         "Change Ratio to " + std::string(ratioName(aspect)), editing.author);
}

} // namespace framewright
