#include "editor/commands/clip_placing_commands.h"

#include "editor/commands/internal/audio_rule.h"
#include "editor/commands/internal/carry_out.h"
#include "model/clip_lookup.h"
#include "model/edit_limits.h"
#include "model/time_rules.h"

#include <algorithm>

namespace framewright {

namespace {

std::vector<Id> freshIDs(std::size_t count)
{
    std::vector<Id> ids(count);
    std::ranges::generate(ids, &Id::random);
    return ids;
}

/// The clip that plays the requested range, checked against the file's length.
Outcome<Clip> clipOf(MediaAsset const& source, ClipToAdd const& wanted)
{
    bool const isPhoto = source.kind == MediaKind::image;
    TimeRange const file{0, isPhoto ? longestPhotoLength : source.duration};
    auto const isInside = [&](double time) {
        return time >= 0 && time <= file.end + timeTolerance;
    };

    Clip clip;
    clip.id = Id::random();
    clip.assetID = source.id;
    clip.sourceStart = wanted.sourceStart.value_or(0);
    if (!isInside(clip.sourceStart) || clip.sourceStart > file.end - timeTolerance)
        return Refusal{Reason::inOutsideSource, {}, file};
    double const wholeEnd = isPhoto ? clip.sourceStart + photoLength : file.end;
    clip.sourceEnd =
        wanted.length ? clip.sourceStart + *wanted.length : wanted.sourceEnd.value_or(wholeEnd);
    if (isTooShort(clip.length()))
        return Refusal{Reason::tooShort};
    if (!isInside(clip.sourceEnd))
        return Refusal{isPhoto ? Reason::newPhotoTooLong : Reason::pastSourceEnd, {}, file};
    clip.sourceEnd = std::min(clip.sourceEnd, file.end);
    return clip;
}

} // namespace

QCoro::Task<Outcome<Placed>> addClip(Editing editing, ClipToAdd wanted)
{
    Project before = editing.project();
    if (auto const track = editableTrack(before, wanted.trackID); !track)
        co_return track.refusal();
    auto const source = co_await probeSource(editing, wanted.source);
    if (!source)
        co_return source.refusal();
    if (!editing.state.isOpen())
        co_return Refusal{Reason::noProject};

    // Probing took a while: the track may be gone or locked by now.
    Project project = source->addedTo(editing.project());
    auto const track = editableTrack(project, wanted.trackID);
    if (!track)
        co_return track.refusal();
    Clip unplaced;
    unplaced.assetID = source->asset.id;
    if (auto const refusal = kindRefusal(project, unplaced, **track))
        co_return *refusal;
    if (auto const refusal = audioRefusal(*source, **track))
        co_return *refusal;
    auto const clip = clipOf(source->asset, wanted);
    if (!clip)
        co_return clip.refusal();
    double const time = wanted.time.value_or((*track)->end());
    editing.state.media().remember(*source);
    co_return carryOut(editing, place(std::move(project), *clip, wanted.trackID, time), "Add Clip");
}

Outcome<Placed> addPlaceholder(Editing editing, PlaceholderToAdd const& wanted)
{
    constexpr double usualLength = 3;
    NewPlaceholder placeholder;
    placeholder.id = Id::random();
    placeholder.name = wanted.name;
    placeholder.length = wanted.length.value_or(usualLength);
    placeholder.trackID = wanted.trackID;
    placeholder.time = wanted.time;
    return carryOut(editing, addPlaceholder(editing.project(), placeholder), "Add Placeholder");
}

Outcome<SplitClip> splitClip(Editing editing, Id const& clipID, double time)
{
    Project project = editing.project();
    auto const spot = editableClip(project, clipID);
    if (!spot)
        return spot.refusal();
    Clip const& clip = spot->clip();
    if (!canSplit(clip, time))
        return Refusal{Reason::splitOutsideClip, Subject::clip(clipID),
                       TimeRange{clip.timelineStart, clip.end()}, time};
    return carryOut(editing, split(project, clipID, std::nullopt, time, Id::random()),
                    "Split at Playhead");
}

Outcome<Removed> removeClips(Editing editing, std::span<Id const> clipIDs)
{
    return carryOut(editing, removeClips(editing.project(), clipIDs),
                    clipIDs.size() == 1 ? "Delete Clip" : "Delete Clips");
}

Outcome<PlacedClips> duplicateClips(Editing editing, std::span<Id const> clipIDs)
{
    auto copies = carryOut(
        editing, duplicateClips(editing.project(), clipIDs, freshIDs(clipIDs.size())), "Duplicate");
    if (copies)
        editing.state.selection().selectClip(copies->clipIDs.front());
    return copies;
}

Outcome<Done> copyClips(Editing editing, std::span<Id const> clipIDs)
{
    std::vector<CopiedClip> copies;
    for (Id const& id : clipIDs) {
        auto const place = findClip(editing.project(), id);
        if (!place)
            return Refusal{Reason::clipGone, Subject::clip(id)};
        copies.push_back({*place->clip, place->track->kind});
    }
    editing.state.selection().copy(std::move(copies));
    return Done();
}

Outcome<PlacedClips> paste(Editing editing)
{
    Selection& selection = editing.state.selection();
    auto const& copied = selection.clipboard();
    if (copied.empty())
        return Refusal{Reason::nothingCopied};
    auto pasted =
        carryOut(editing,
                 pasteClips(editing.project(), copied, selection.activeTrack(),
                            selection.playhead(), freshIDs(copied.size()), freshIDs(copied.size())),
                 "Paste");
    if (pasted)
        selection.selectClip(pasted->clipIDs.front());
    return pasted;
}

} // namespace framewright
