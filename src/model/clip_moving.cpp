#include "model/clip_moving.h"

#include "model/clip_lookup.h"
#include "model/edit_limits.h"
#include "model/internal/track_rules.h"
#include "model/time_rules.h"

#include <algorithm>
#include <cmath>
#include <unordered_set>

namespace framewright {

namespace {

using Ids = std::unordered_set<Id>;

Refusal otherKindRefusal(Project const& project, Clip const& clip, Track const& target)
{
    if (clip.isPlaceholder())
        return {Reason::placeholderKeepsKind, Subject::clip(clip.id)};
    if (auto refusal = kindRefusal(project, clip, target))
        return *refusal;
    return {Reason::clipKeepsKind, Subject::clip(clip.id)};
}

Outcome<Placed> moveAcross(Project project, ClipSpot spot, Track& target, double time)
{
    if (target.kind != spot.track->kind)
        return otherKindRefusal(project, spot.clip(), target);

    Clip clip = spot.clip();
    Id const id = clip.id;
    auto const at = insertGroup(target, {std::move(clip)}, time);
    if (!at)
        return noRoomRefusal(target, time);
    std::vector<Clip>& left = spot.track->clips.edit();
    left.erase(left.begin() + std::ptrdiff_t(spot.index));
    normalize(*spot.track);
    Id const trackID = target.id;
    return Placed{std::move(project), id, trackID, *at};
}

std::size_t countOf(Track const& track, Ids const& ids)
{
    return std::size_t(std::ranges::count_if(
        *track.clips, [&](Clip const& clip) { return ids.contains(clip.id); }));
}

/// The tracks that hold these clips. Refused when one is locked or a clip is on no track.
Outcome<std::vector<Track*>> editableTracksOf(Project& project, Ids const& ids)
{
    if (ids.empty())
        return Refusal{Reason::nothingSelected};
    std::vector<Track*> tracks;
    std::size_t found = 0;
    for (Track& track : project.tracks) {
        std::size_t const here = countOf(track, ids);
        if (here == 0)
            continue;
        if (track.isLocked)
            return lockedRefusal(track);
        tracks.push_back(&track);
        found += here;
    }
    if (found < ids.size())
        return Refusal{Reason::clipGone};
    return tracks;
}

/// How far these clips of a free track can go left before one meets a clip that stays, or 0.
double roomLeft(Track const& track, Ids const& moving, double room)
{
    double obstacle = 0;
    for (Clip const& clip : *track.clips) {
        if (moving.contains(clip.id))
            room = std::min(room, clip.timelineStart - obstacle);
        else
            obstacle = std::max(obstacle, clip.end());
    }
    return room;
}

/// The same to the right, up to latestTime.
double roomRight(Track const& track, Ids const& moving, double room)
{
    double obstacle = latestTime;
    for (auto clip = track.clips->rbegin(); clip != track.clips->rend(); ++clip) {
        if (moving.contains(clip->id))
            room = std::min(room, obstacle - clip->end());
        else
            obstacle = std::min(obstacle, clip->timelineStart);
    }
    return room;
}

} // namespace

Outcome<Placed> moveClip(Project project, Id const& clipID, double time,
                         std::optional<Id> const& toTrack)
{
    auto const found = editableClip(project, clipID);
    if (!found)
        return found.refusal();
    ClipSpot const spot = *found;
    if (toTrack && *toTrack != spot.track->id) {
        auto const target = editableTrack(project, *toTrack);
        if (!target)
            return target.refusal();
        return moveAcross(std::move(project), spot, **target, time);
    }
    auto const at = moveWithin(*spot.track, spot.index, time);
    if (!at)
        return noRoomRefusal(*spot.track, time);
    Id const trackID = spot.track->id;
    return Placed{std::move(project), clipID, trackID, *at};
}

Outcome<Nudged> nudgeClips(Project project, std::span<Id const> clipIDs, double seconds)
{
    Ids const ids(clipIDs.begin(), clipIDs.end());
    auto const tracks = editableTracksOf(project, ids);
    if (!tracks)
        return tracks.refusal();

    double by = std::abs(seconds);
    for (Track* const track : *tracks) {
        if (track->isMagnetic)
            return Refusal{Reason::orderedNotPositioned, Subject::track(track->id)};
        normalize(*track);
        by = seconds < 0 ? roomLeft(*track, ids, by) : roomRight(*track, ids, by);
    }
    if (!(by > timeTolerance))
        return Refusal{Reason::noRoomToNudge};

    by = std::copysign(by, seconds);
    for (Track* const track : *tracks) {
        for (Clip& clip : track->clips.edit()) {
            if (ids.contains(clip.id))
                clip.timelineStart = std::max(0.0, clip.timelineStart + by);
        }
    }
    return Nudged{std::move(project), by};
}

Outcome<Removed> removeClip(Project project, Id const& clipID)
{
    return removeClips(std::move(project), {&clipID, 1});
}

Outcome<Removed> removeClips(Project project, std::span<Id const> clipIDs)
{
    Ids const ids(clipIDs.begin(), clipIDs.end());
    auto const tracks = editableTracksOf(project, ids);
    if (!tracks)
        return tracks.refusal();

    bool closedGap = false;
    auto const isChosen = [&](Clip const& clip) { return ids.contains(clip.id); };
    for (Track* const track : *tracks) {
        auto const first = std::ranges::find_if(*track->clips, isChosen);
        if (track->isMagnetic)
            closedGap |= !std::all_of(first, track->clips->end(), isChosen);
        std::erase_if(track->clips.edit(), isChosen);
        normalize(*track);
    }
    return Removed{std::move(project), closedGap};
}

} // namespace framewright
