#include "model/clip_placing.h"

#include "model/clip_lookup.h"
#include "model/edit_limits.h"
#include "model/internal/track_rules.h"
#include "model/time_rules.h"
#include "model/track_editing.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <limits>
#include <unordered_map>

namespace framewright {

namespace {

/// The clips of a track that are in `chosen`, in its order, and the index behind the last of them.
struct Chosen {
    std::vector<Clip> clips;
    std::size_t behind = 0;
};

Chosen chosenOf(Track const& track, std::unordered_map<Id, Id> const& chosen)
{
    Chosen found;
    for (std::size_t i = 0; i < track.clips->size(); ++i) {
        if (chosen.contains((*track.clips)[i].id)) {
            found.clips.push_back((*track.clips)[i]);
            found.behind = i + 1;
        }
    }
    return found;
}

double lastEnd(std::vector<Clip> const& clips)
{
    double end = -std::numeric_limits<double>::infinity();
    for (Clip const& clip : clips)
        end = std::max(end, clip.end());
    return end;
}

/// The copied clips of one kind under their new ids, in time order.
std::vector<Clip> copiesOfKind(std::span<CopiedClip const> clips, std::span<Id const> newIDs,
                               TrackKind kind)
{
    std::vector<Clip> group;
    for (std::size_t i = 0; i < clips.size(); ++i) {
        if (clips[i].kind != kind)
            continue;
        group.push_back(clips[i].clip);
        group.back().id = newIDs[i];
    }
    std::ranges::stable_sort(group, {}, &Clip::timelineStart);
    return group;
}

double firstStart(std::span<CopiedClip const> clips)
{
    auto const first = std::ranges::min_element(
        clips, {}, [](CopiedClip const& copied) { return copied.clip.timelineStart; });
    return first->clip.timelineStart;
}

/// Pastes one group. Returns the refusal, if any.
std::optional<Refusal> pasteGroup(PlacedClips& result, std::vector<Clip> group, TrackKind kind,
                                  std::optional<Id> trackID, double time, Id const& newTrackID)
{
    if (!trackID) {
        auto added = addTrack(std::move(result.project), {.id = newTrackID, .kind = kind});
        assert(added);
        result.project = std::move(*added);
        result.addedTracks.push_back(newTrackID);
        trackID = newTrackID;
    }
    Track& track = *result.project.track(*trackID);
    for (Clip const& clip : group) {
        if (auto refusal = kindRefusal(result.project, clip, track))
            return refusal;
        if (auto refusal = rangeRefusal(result.project, clip))
            return refusal;
    }
    if (!insertGroup(track, std::move(group), time))
        return Refusal{Reason::noRoomToPaste};
    return std::nullopt;
}

} // namespace

Outcome<Placed> place(Project project, Clip clip, Id const& trackID, double time)
{
    auto const found = editableTrack(project, trackID);
    if (!found)
        return found.refusal();
    Track& track = **found;
    if (auto refusal = kindRefusal(project, clip, track))
        return *refusal;
    if (auto refusal = rangeRefusal(project, clip))
        return *refusal;

    Id const id = clip.id;
    auto const at = insertGroup(track, {std::move(clip)}, time);
    if (!at)
        return noRoomRefusal(track, time);
    return Placed{std::move(project), id, trackID, *at};
}

std::optional<Id> preferredTrack(Project const& project, TrackKind kind,
                                 std::optional<Id> const& preferring)
{
    auto const isUsable = [&](Track const& track) { return track.kind == kind && !track.isLocked; };
    if (preferring) {
        Track const* const preferred = project.track(*preferring);
        if (preferred && isUsable(*preferred))
            return preferred->id;
    }
    auto const found = std::ranges::find_if(project.tracks, isUsable);
    return found == project.tracks.end() ? std::nullopt : std::optional(found->id);
}

Outcome<Placed> addPlaceholder(Project project, NewPlaceholder const& placeholder)
{
    auto trackID = placeholder.trackID;
    if (!trackID)
        trackID = preferredTrack(project, TrackKind::video);
    if (!trackID) {
        auto const videoTracks = project.videoTracks();
        return videoTracks.empty() ? Refusal{Reason::noVideoTrack}
                                   : lockedRefusal(*videoTracks.front());
    }

    Clip clip;
    clip.id = placeholder.id;
    clip.assetID = Clip::placeholderAssetID;
    clip.sourceEnd = placeholder.length;
    clip.placeholderName = placeholder.name.empty() ? "Placeholder" : placeholder.name;
    clip.placeholderNote = placeholder.note;
    Track const* const track = project.track(*trackID);
    double const end = track ? track->end() : 0;
    return place(std::move(project), std::move(clip), *trackID, placeholder.time.value_or(end));
}

Outcome<PlacedClips> duplicateClips(Project project, std::span<Id const> clipIDs,
                                    std::span<Id const> newIDs)
{
    assert(clipIDs.size() == newIDs.size());
    if (clipIDs.empty())
        return Refusal{Reason::nothingSelected};
    std::unordered_map<Id, Id> copies;
    for (std::size_t i = 0; i < clipIDs.size(); ++i)
        copies.emplace(clipIDs[i], newIDs[i]);

    std::size_t copied = 0;
    for (Track& track : project.tracks) {
        Chosen chosen = chosenOf(track, copies);
        if (chosen.clips.empty())
            continue;
        if (track.isLocked)
            return lockedRefusal(track);
        copied += chosen.clips.size();
        double const end = lastEnd(chosen.clips);
        for (Clip& clip : chosen.clips)
            clip.id = copies.at(clip.id);
        auto const at = track.isMagnetic
                            ? insertGroupAt(track, std::move(chosen.clips), chosen.behind)
                            : insertGroup(track, std::move(chosen.clips), end);
        if (!at)
            return Refusal{Reason::noRoomToDuplicate};
    }
    if (copied < copies.size())
        return Refusal{Reason::clipGone};
    return PlacedClips{std::move(project), {newIDs.begin(), newIDs.end()}, {}};
}

Outcome<PlacedClips> pasteClips(Project project, std::span<CopiedClip const> clips,
                                std::optional<Id> const& preferring, double time,
                                std::span<Id const> newIDs, std::span<Id const> newTrackIDs)
{
    assert(clips.size() == newIDs.size());
    if (clips.empty())
        return Refusal{Reason::nothingCopied};
    double const first = firstStart(clips);
    PlacedClips result{std::move(project), {newIDs.begin(), newIDs.end()}, {}};
    for (TrackKind const kind :
         {TrackKind::video, TrackKind::audio, TrackKind::text, TrackKind::subtitles}) {
        std::vector<Clip> group = copiesOfKind(clips, newIDs, kind);
        if (group.empty())
            continue;
        auto const trackID = preferredTrack(result.project, kind, preferring);
        std::size_t const added = result.addedTracks.size();
        assert(trackID || added < newTrackIDs.size());
        double const at = time + (group.front().timelineStart - first);
        if (auto refusal = pasteGroup(result, std::move(group), kind, trackID, at,
                                      trackID ? Id() : newTrackIDs[added]))
            return *refusal;
    }
    return result;
}

} // namespace framewright
