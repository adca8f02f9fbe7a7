#include "model/clip_audio.h"

#include "model/clip_lookup.h"
#include "model/internal/track_rules.h"
#include "model/time_rules.h"
#include "model/track_editing.h"

#include <algorithm>
#include <cmath>

namespace framewright {

namespace {

bool hasRoomAt(Track const& track, double length, double time)
{
    if (track.kind != TrackKind::audio || track.isLocked || track.isMagnetic)
        return false;
    auto const start = freeStart(track, length, time, std::nullopt, latestTime);
    return start && std::abs(*start - time) <= timeTolerance;
}

/// Adds an audio track that does not duck: detached audio is usually speech.
Project withTrackForAudio(Project project, Id const& id)
{
    auto added = addTrack(std::move(project), {.id = id, .kind = TrackKind::audio});
    Project result = std::move(*added);
    result.track(id)->ducks = false;
    return result;
}

} // namespace

Outcome<DetachedAudio> detachAudio(Project project, Id const& clipID, Id const& newID,
                                   Id const& newTrackID)
{
    auto const spot = editableClip(project, clipID);
    if (!spot)
        return spot.refusal();
    Clip const& clip = spot->clip();
    MediaAsset const* const asset = project.asset(clip.assetID);
    if (spot->track->kind != TrackKind::video || !asset || asset->kind != MediaKind::video)
        return Refusal{Reason::noAudioToDetach, Subject::clip(clipID)};
    if (clip.volume == 0)
        return Refusal{Reason::alreadySilent, Subject::clip(clipID)};

    Clip audio;
    audio.id = newID;
    audio.assetID = clip.assetID;
    audio.timelineStart = clip.timelineStart;
    audio.sourceStart = clip.sourceStart;
    audio.sourceEnd = clip.sourceEnd;
    audio.volume = clip.volume;
    spot->edit().volume = 0;

    auto const found = std::ranges::find_if(project.tracks, [&](Track const& track) {
        return hasRoomAt(track, audio.length(), audio.timelineStart);
    });
    bool const isNewTrack = found == project.tracks.end();
    Id const trackID = isNewTrack ? newTrackID : found->id;
    if (isNewTrack)
        project = withTrackForAudio(std::move(project), newTrackID);
    double const time = audio.timelineStart;
    insertGroup(*project.track(trackID), {std::move(audio)}, time);
    return DetachedAudio{std::move(project), newID, trackID, isNewTrack};
}

Project clampAudioToTimeline(Project project)
{
    for (Track& track : project.tracks) {
        if (track.kind != TrackKind::audio || track.isLocked)
            continue;
        auto const isEarly = [](Clip const& clip) { return clip.timelineStart < 0; };
        if (std::ranges::none_of(*track.clips, isEarly))
            continue;
        std::vector<Clip> early;
        std::ranges::copy_if(*track.clips, std::back_inserter(early), isEarly);
        std::erase_if(track.clips.edit(), isEarly);
        for (Clip& clip : early)
            insertGroup(track, {std::move(clip)}, 0);
    }
    return project;
}

} // namespace framewright
