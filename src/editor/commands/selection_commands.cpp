#include "editor/commands/selection_commands.h"

#include "editor/commands/internal/carry_out.h"

namespace framewright {

namespace {

std::span<Id const> selected(Editing editing)
{
    return editing.state.selection().clips();
}

Refusal nothingSelected()
{
    return {Reason::nothingSelected};
}

} // namespace

Outcome<SplitClip> splitAtPlayhead(Editing editing)
{
    Selection const& selection = editing.state.selection();
    auto const clip =
        selection.clips().empty() ? std::nullopt : std::optional(selection.clips().front());
    return carryOut(
        editing,
        split(editing.project(), clip, selection.activeTrack(), selection.playhead(), Id::random()),
        "Split at Playhead");
}

Outcome<Removed> deleteSelection(Editing editing)
{
    if (selected(editing).empty())
        return nothingSelected();
    auto const clips = editing.state.selection().clips(); // The edit changes the selection.
    return removeClips(editing, clips);
}

Outcome<PlacedClips> duplicateSelection(Editing editing)
{
    if (selected(editing).empty())
        return nothingSelected();
    auto const clips = editing.state.selection().clips();
    return duplicateClips(editing, clips);
}

Outcome<Done> copySelection(Editing editing)
{
    if (selected(editing).empty())
        return nothingSelected();
    return copyClips(editing, selected(editing));
}

Outcome<Nudged> nudgeSelection(Editing editing, double seconds)
{
    if (selected(editing).empty())
        return nothingSelected();
    auto const clips = editing.state.selection().clips();
    return nudgeClips(editing, clips, seconds);
}

Outcome<Project> setSelectedTransform(Editing editing, ClipTransform const& transform)
{
    if (selected(editing).empty())
        return nothingSelected();
    ClipChanges changes;
    for (auto const field :
         {&ClipTransform::scale, &ClipTransform::offsetX, &ClipTransform::offsetY,
          &ClipTransform::cropLeft, &ClipTransform::cropRight, &ClipTransform::cropTop,
          &ClipTransform::cropBottom})
        changes.transform.emplace_back(field, transform.*field);
    return changeClip(editing, selected(editing).front(), changes);
}

Outcome<Project> resetSelectedTransform(Editing editing)
{
    return setSelectedTransform(editing, ClipTransform());
}

Outcome<Done> seek(Editing editing, double time)
{
    if (time < 0)
        return Refusal{Reason::outOfRange, Subject::setting(Setting::placeTime)};
    editing.state.selection().seek(time);
    return Done();
}

Outcome<std::string> undo(Editing editing)
{
    if (auto const step = editing.state.undo(editing.author))
        return *step;
    return Refusal{Reason::nothingToUndo};
}

Outcome<std::string> redo(Editing editing)
{
    if (auto const step = editing.state.redo(editing.author))
        return *step;
    return Refusal{Reason::nothingToRedo};
}

} // namespace framewright
