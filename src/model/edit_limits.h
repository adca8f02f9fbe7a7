#pragma once

#include "model/outcome.h"
#include "model/project.h"

namespace framewright {

/// Limits of the levels and placements an edit may set.
inline constexpr float highestVolume =
    1.5f; ///< Of a clip and of a track; 1 leaves the audio unchanged.
inline constexpr double deepestCrop = 0.45;    ///< Of the frame, per side.
inline constexpr double largestScale = 100.0;  ///< 1 fits the canvas.
inline constexpr double largestOffset = 100.0; ///< Of the canvas, either way.

// Refusals shared by several edits.
Refusal lockedRefusal(Track const& track);
Refusal noRoomRefusal(Track const& track, double time);
Refusal pastTimelineEnd();
Refusal outOfRange(Setting setting);

/// The length of the file a clip plays; nothing for photos, placeholders and texts, which can have
/// any. 0 when the file is not part of the project.
std::optional<double> sourceLength(Project const& project, Clip const& clip);

/// Why a clip can't be on a track of this kind, whatever its times; nothing when it can.
///
/// Video tracks hold video, photos and placeholders; audio tracks hold audio, video (its audio) and
/// placeholders; text tracks hold texts. Subtitles tracks hold no clips.
std::optional<Refusal> kindRefusal(Project const& project, Clip const& clip, Track const& track);

/// Why a clip's own times are invalid: shorter than 0.1 s, a source range outside its file, a
/// photo longer than 60 s; nothing when they are valid. Its place on the timeline is not checked.
///
/// `playedBefore` is the clip's source end before the edit: a file that probes shorter than the
/// clip must not block edits that keep its end.
std::optional<Refusal> rangeRefusal(Project const& project, Clip const& clip,
                                    double playedBefore = 0);

/// A clip's name: that of its placeholder, its words, or its file's name.
std::string clipName(Project const& project, Clip const& clip);

} // namespace framewright
