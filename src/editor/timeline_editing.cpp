// The editing operations of an AppState: the rules are the model's; here each gets its name in the
// undo history, fresh ids, and what becomes of the selection.

#include "editor/app_state.h"

#include "model/clip_settings.h"

#include <algorithm>

namespace framewright {

namespace {

Project const& projectOf(Project const& edit)
{
    return edit;
}

template <class Edit>
Project const& projectOf(Edit const& edit)
{
    return edit.project;
}

std::vector<Id> freshIDs(std::size_t count)
{
    std::vector<Id> ids(count);
    std::ranges::generate(ids, &Id::random);
    return ids;
}

/// Runs the next change on what the last one gave, unless one was refused.
template <class Change>
void andThen(Outcome<Project>& project, Change change)
{
    if (project)
        project = change(std::move(*project));
}

} // namespace

template <class Edit>
Outcome<Edit> AppState::carryOut(Outcome<Edit> edit, std::string const& actionName,
                                 std::optional<double> seekTo)
{
    // An edit that came out as it was is no step: there is nothing to take back.
    if (edit && !(projectOf(*edit) == m_project))
        commit(projectOf(*edit), actionName, seekTo);
    return edit;
}

Outcome<Placed> AppState::addClip(Project project, Clip clip, Id const& trackID, double time)
{
    return carryOut(place(std::move(project), std::move(clip), trackID, time), "Add Clip");
}

Outcome<Placed> AppState::addPlaceholder(NewPlaceholder const& placeholder)
{
    return carryOut(framewright::addPlaceholder(m_project, placeholder), "Add Placeholder");
}

Outcome<Placed> AppState::addText(NewText text)
{
    text.id = Id::random();
    text.newTrackID = Id::random();
    return carryOut(framewright::addText(m_project, text), "Add Text");
}

Outcome<Project> AppState::changeText(Id const& clipID, TextChanges const& changes)
{
    return carryOut(framewright::changeText(m_project, clipID, changes), "Edit Text");
}

Outcome<SplitClip> AppState::splitClip(std::optional<Id> const& clipID,
                                       std::optional<Id> const& fallbackTrack, double time)
{
    return carryOut(split(m_project, clipID, fallbackTrack, time, Id::random()),
                    "Split at Playhead");
}

Outcome<Trimmed> AppState::trimClip(Id const& clipID, Trim const& trim)
{
    return carryOut(framewright::trimClip(m_project, clipID, trim), "Trim Clip");
}

Outcome<Placed> AppState::moveClip(Id const& clipID, double time, std::optional<Id> const& toTrack)
{
    return carryOut(framewright::moveClip(m_project, clipID, time, toTrack), "Move Clip");
}

Outcome<Project> AppState::editRange(Id const& clipID, double sourceStart)
{
    return carryOut(framewright::slipClip(m_project, clipID, sourceStart), "Slip Clip");
}

Outcome<Removed> AppState::removeClips(std::span<Id const> clipIDs)
{
    return carryOut(framewright::removeClips(m_project, clipIDs),
                    clipIDs.size() == 1 ? "Delete Clip" : "Delete Clips");
}

Outcome<PlacedClips> AppState::duplicateClips(std::span<Id const> clipIDs)
{
    auto copies = carryOut(
        framewright::duplicateClips(m_project, clipIDs, freshIDs(clipIDs.size())), "Duplicate");
    if (copies)
        select(copies->clipIDs.front());
    return copies;
}

Outcome<Nudged> AppState::nudgeClips(std::span<Id const> clipIDs, double seconds)
{
    bool const isFrame = std::abs(seconds) < 0.5;
    std::string const name = std::string("Nudge ") + (seconds < 0 ? "Left" : "Right") +
                             (isFrame ? " 1 Frame" : " 1 Second");
    return carryOut(framewright::nudgeClips(m_project, clipIDs, seconds), name);
}

Outcome<DetachedAudio> AppState::detachAudio(Id const& clipID)
{
    return carryOut(framewright::detachAudio(m_project, clipID, Id::random(), Id::random()),
                    "Detach Audio");
}

Outcome<Replaced> AppState::replaceClip(Project project, Id const& clipID, Replacement const& with,
                                        Fill fill)
{
    auto const place = findClip(project, clipID);
    std::string const name =
        place && place->clip->isPlaceholder() ? "Replace Placeholder" : "Replace Clip";
    return carryOut(fill == Fill::withPlaceholder
                        ? replaceClipReturningFiller(std::move(project), clipID, with, Id::random())
                        : framewright::replaceClip(std::move(project), clipID, with),
                    name);
}

Outcome<Project> AppState::changeClip(Id const& clipID, ClipChanges const& changes)
{
    Outcome<Project> project = m_project;
    std::string name = "Adjust Clip";
    if (changes.volume) {
        name = "Change Level";
        andThen(project,
                [&](Project p) { return setClipVolume(std::move(p), clipID, *changes.volume); });
    }
    if (changes.transform) {
        name = changes.volume ? "Adjust Clip" : "Transform Clip";
        andThen(project, [&](Project p) {
            return setClipTransform(std::move(p), clipID, *changes.transform);
        });
    }
    if (changes.placeholderName) {
        name = changes.volume || changes.transform ? "Adjust Clip" : "Rename Placeholder";
        andThen(project, [&](Project p) {
            return framewright::renamePlaceholder(std::move(p), clipID, *changes.placeholderName);
        });
    }
    return carryOut(std::move(project), name);
}

Outcome<Project> AppState::renamePlaceholder(Id const& clipID, std::string const& name)
{
    ClipChanges changes;
    changes.placeholderName = name;
    return changeClip(clipID, changes);
}

Outcome<Replaced> AppState::replacePlaceholder(Imported const& file, Id const& clipID, Fill fill)
{
    return replaceClip(withAsset(file), clipID, {Replacement::From::file, file.asset.id}, fill);
}

void AppState::copyClips(std::span<Id const> clipIDs)
{
    m_copied.clear();
    for (Id const& id : clipIDs) {
        if (auto const place = findClip(m_project, id))
            m_copied.push_back({*place->clip, place->track->kind});
    }
}

Outcome<PlacedClips> AppState::paste()
{
    if (m_copied.empty())
        return Refusal{Reason::nothingCopied};
    auto pasted = carryOut(pasteClips(m_project, m_copied, m_activeTrack, m_currentTime,
                                      freshIDs(m_copied.size()), freshIDs(m_copied.size())),
                           "Paste");
    if (pasted)
        select(pasted->clipIDs.front());
    return pasted;
}

Outcome<Id> AppState::addTrack(NewTrack track)
{
    track.id = Id::random();
    auto const added = carryOut(framewright::addTrack(m_project, track), "Add Track");
    if (!added)
        return added.refusal();
    return track.id;
}

Outcome<Project> AppState::removeTrack(Id const& trackID)
{
    return carryOut(framewright::removeTrack(m_project, trackID), "Delete Track");
}

Outcome<Project> AppState::moveTrack(Id const& trackID, int offset)
{
    return carryOut(framewright::moveTrack(m_project, trackID, offset), "Move Track");
}

Outcome<Project> AppState::changeTrack(Id const& trackID, TrackChanges const& changes)
{
    return carryOut(framewright::changeTrack(m_project, trackID, changes), "Change Track");
}

void AppState::changeAspect(AspectPreset aspect)
{
    commit(framewright::changeAspect(m_project, aspect),
           "Change Ratio to " + std::string(ratioName(aspect)));
}

} // namespace framewright
