#pragma once

#include "model/outcome.h"
#include "model/project.h"

#include <optional>
#include <span>
#include <string>
#include <vector>

namespace framewright {

// Each operation takes the project by value: moved in, only what changes is copied. A refused edit
// changes nothing. The caller supplies unused ids for whatever is new.

/// Where a clip landed.
struct Placed {
    Project project;
    Id clipID;
    Id trackID;
    double at = 0;
};

/// Puts a clip on a track, as near to `time` as there is room.
///
/// On a free track nothing else moves: the clip takes the nearest gap that holds it. On a
/// magnetic track it goes between two clips and those after it move right.
///
///     free       AAAA.BBBB...   CC at 4:   AAAA.BBBBCC.
///     magnetic   AAAABBBB       CC at 4:   AAAACCBBBB
///
/// The clip brings its id, source range and everything else but its start. Media must be in the
/// project's assets already.
///
/// Refused when the track is gone, locked or of a kind that does not hold such a clip, when the
/// clip is shorter than 0.1 s or plays past its file, and when there is no room before latestTime.
Outcome<Placed> place(Project project, Clip clip, Id const& trackID, double time);

/// The track that new clips of a kind go to: the preferred one when it is of that kind and not
/// locked, else the topmost unlocked one of the kind; nothing when there is none.
std::optional<Id> preferredTrack(Project const& project, TrackKind kind,
                                 std::optional<Id> const& preferring = std::nullopt);

/// A named slot for footage that does not exist yet.
struct NewPlaceholder {
    Id id;
    std::string name;
    std::optional<std::string> note = {}; ///< What should fill the slot.
    double length = 3;
    std::optional<Id> trackID = {};  ///< Else the topmost unlocked video track.
    std::optional<double> time = {}; ///< Else the end of the track.
};

/// Puts a placeholder on a video or audio track.
///
/// Refused as `place`, and when there is no video track and none was given.
Outcome<Placed> addPlaceholder(Project project, NewPlaceholder const& placeholder);

/// Several new clips, in the order their originals were given.
struct PlacedClips {
    Project project;
    std::vector<Id> clipIDs;
    std::vector<Id> addedTracks; ///< Tracks that had to be added to hold them.
};

/// Copies clips to right after themselves; `newIDs` names the copies, one for each of `clipIDs`.
///
/// The clips chosen on one track are copied as a group behind the last of them: on a magnetic
/// track directly behind, moving later clips right; on a free track with the group's own spacing,
/// to the nearest gap that holds it.
///
///     magnetic   AABCC         A and B:   AABAABCC
///     free       AA.BB.CC...   A:         AA.BB.CCAA.
///     free       A.B...CC      A and B:   A.BA.BCC
///
/// Refused when a clip is gone, its track locked, or without room.
Outcome<PlacedClips> duplicateClips(Project project, std::span<Id const> clipIDs,
                                    std::span<Id const> newIDs);

/// A copied clip and the kind of its track.
struct CopiedClip {
    Clip clip;
    TrackKind kind = TrackKind::video;
};

/// Pastes copied clips at `time`.
///
/// Clips of one kind go as a group, with their spacing, to the preferred track of that kind, by the
/// rules of `place`; if there is none, a track is added. The earliest clip aims for `time`; the
/// others keep their distance from it.
///
/// `newIDs` names the pasted clips, one for each copied one; `newTrackIDs` the tracks that may
/// be added: one for each kind among the clips is enough.
///
/// Refused as `place`.
Outcome<PlacedClips> pasteClips(Project project, std::span<CopiedClip const> clips,
                                std::optional<Id> const& preferring, double time,
                                std::span<Id const> newIDs, std::span<Id const> newTrackIDs);

} // namespace framewright
