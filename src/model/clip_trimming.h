#pragma once

#include "model/outcome.h"
#include "model/project.h"

#include <optional>

namespace framewright {

/// The two parts of a split clip.
struct SplitClip {
    Project project;
    Id firstID;  ///< The clip that was cut; it keeps its id and start.
    Id secondID; ///< The new one behind it.
};

/// Whether a clip can be cut at a time: both parts would be at least 0.1 s long.
bool canSplit(Clip const& clip, double time);

/// Cuts a clip in two at a time. Neither part moves; both keep level, placement, name and words.
///
/// The clip is the preferred one when it is under the time, else the one of the fallback track
/// that is. Refused when its track is locked, when there is no clip there, and when a part would be
/// shorter than 0.1 s.
Outcome<SplitClip> split(Project project, std::optional<Id> const& preferring,
                         std::optional<Id> const& fallbackTrack, double time, Id const& newID);

/// New edges of a clip. `start` and `end` are timeline times, the source follows; `in` and `out`
/// are source times, the timeline start stays. Edges not given follow from the others.
struct Trim {
    std::optional<double> start = {};
    std::optional<double> end = {};
    std::optional<double> in = {};
    std::optional<double> out = {};
};

/// A trimmed clip's new times.
struct Trimmed {
    Project project;
    double start = 0;
    double end = 0;
    /// What a new start took from the head (negative: gave back), where the clip stays packed
    /// on a magnetic track instead of starting there.
    std::optional<double> headTrimmedBy = {};
};

/// Moves the edges of a clip.
///
/// On a magnetic track the clips after it follow by the change of its length, and a new start trims
/// its head in place. On a free track no other clip moves.
///
/// Refused when the clip is gone or its track locked, and when it would be shorter than 0.1 s, or
/// as a text longer than an hour, as a photo longer than 60 s, start before 0, play past its file,
/// or overlap a neighbour of a free track.
Outcome<Trimmed> trimClip(Project project, Id const& clipID, Trim const& trim);

/// Changes which part of its file a clip plays: its in-point becomes `sourceStart`, its place and
/// length stay.
///
/// Refused when the clip is gone, its track locked or its file too short for it, and for photos,
/// placeholders and texts, which have no range to slip.
Outcome<Project> slipClip(Project project, Id const& clipID, double sourceStart);

} // namespace framewright
