#pragma once

#include "editor/commands/editing.h"
#include "editor/commands/media_commands.h"
#include "model/clip_moving.h"
#include "model/clip_placing.h"
#include "model/clip_trimming.h"

#include <QCoro/QCoroTask>

#include <optional>
#include <span>
#include <string>

namespace framewright {

/// A range of a file to put on a track. Seconds.
struct ClipToAdd {
    MediaSource source;
    Id trackID;
    std::optional<double> time = {};        ///< On the timeline; else the end of the track.
    std::optional<double> sourceStart = {}; ///< Else 0.
    /// Else the end of the file; a photo then lasts 3 s.
    std::optional<double> sourceEnd = {};
    std::optional<double> length = {}; ///< From the source start; instead of `sourceEnd`.
};

/// "Add Clip". The file becomes part of the project in the same step.
///
/// Refused as `place`, for a range outside the file, and for a file without audio on an audio
/// track. Throws MediaError when the file can't be used.
QCoro::Task<Outcome<Placed>> addClip(Editing editing, ClipToAdd clip);

/// A clip in place of footage that does not exist yet. Seconds.
struct PlaceholderToAdd {
    std::string name;
    std::optional<double> length = {}; ///< Else 3 s.
    std::optional<Id> trackID = {};    ///< Else the topmost unlocked video track.
    std::optional<double> time = {};   ///< Else the end of the track.
};

/// "Add Placeholder".
Outcome<Placed> addPlaceholder(Editing editing, PlaceholderToAdd const& placeholder);

/// "Split at Playhead": cuts a clip at a time. Refused unless both parts are at least 0.1 s long.
Outcome<SplitClip> splitClip(Editing editing, Id const& clipID, double time);

/// "Delete Clip", "Delete Clips".
Outcome<Removed> removeClips(Editing editing, std::span<Id const> clipIDs);

/// "Duplicate". The first copy is selected.
Outcome<PlacedClips> duplicateClips(Editing editing, std::span<Id const> clipIDs);

/// Puts clips on the clipboard. Refused when one of them is gone.
Outcome<Done> copyClips(Editing editing, std::span<Id const> clipIDs);

/// "Paste": inserts the copied clips at the playhead and selects the first. Refused when nothing
/// was copied.
Outcome<PlacedClips> paste(Editing editing);

} // namespace framewright
