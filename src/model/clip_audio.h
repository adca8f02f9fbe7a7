#pragma once

#include "model/outcome.h"
#include "model/project.h"

#include <optional>

namespace framewright {

/// The result of detaching a clip's audio.
struct DetachedAudio {
    Project project;
    Id clipID;
    Id trackID;
    bool isNewTrack = false;
};

/// Puts the audio of a video clip on an audio track as a separate clip, at the same time and with
/// the same source range and level, and silences the video clip.
///
/// It goes on the first audio track that is unlocked, free and has room at exactly that time, else
/// on a new one at the bottom with the id `newTrackID`.
///
/// Refused when the clip is gone or its track locked, when it is not video, and when it is already
/// silent.
Outcome<DetachedAudio> detachAudio(Project project, Id const& clipID, Id const& newID,
                                   Id const& newTrackID);

/// Keeps audio clips inside the timeline: one that starts before 0 moves to the nearest free spot
/// from 0 on, uncut.
///
/// Audio past the end of the video stays: it never lengthens the movie, and cutting it would lose
/// what the next edit of the video may need. Locked tracks are not changed.
Project clampAudioToTimeline(Project project);

} // namespace framewright
