#pragma once

#include "model/outcome.h"
#include "model/project.h"

#include <optional>

namespace framewright {

/// A clip's sound, laid on a track of its own.
struct DetachedAudio {
    Project project;
    Id clipID;
    Id trackID;
    bool isNewTrack = false;
};

/// Lays the sound of a video clip as a clip of its own on an audio track, at the same time and with
/// the same source range and level, and silences the video clip.
///
/// It goes on the first audio track that is unlocked, free and has room at that very time, else on
/// a new one at the bottom, named `newTrackID`.
///
/// Refused when the clip is gone or its track locked, when it is not video, and when it is silent
/// already.
Outcome<DetachedAudio> detachAudio(Project project, Id const& clipID, Id const& newID,
                                   Id const& newTrackID);

/// Keeps audio clips inside the timeline: one that starts before 0 moves to the nearest free spot
/// from 0 on, uncut.
///
/// Sound past the picture's end stays: it never lengthens the picture, and cutting it would lose
/// what the next edit of the picture may need. Locked tracks are left alone.
Project clampAudioToTimeline(Project project);

} // namespace framewright
