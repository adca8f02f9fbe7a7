// The editing operations of an AppState on texts.

#include "editor/app_state.h"

namespace framewright {

Outcome<Placed> AppState::addText(NewText text)
{
    text.id = Id::random();
    text.newTrackID = Id::random();
    auto placed = framewright::addText(m_project, text);
    if (placed)
        commit(placed->project, "Add Text");
    return placed;
}

Outcome<Project> AppState::changeText(Id const& clipID, TextChanges const& changes)
{
    auto changed = framewright::changeText(m_project, clipID, changes);
    if (changed && !(*changed == m_project))
        commit(*changed, "Edit Text");
    return changed;
}

} // namespace framewright
