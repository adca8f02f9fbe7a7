#pragma once

#include "model/clip_placing.h"
#include "model/outcome.h"
#include "model/project.h"

#include <optional>
#include <span>

namespace framewright {

/// Moves a clip to start at `time`, on its own track or on another of the same kind.
///
/// On a free track it lands at the nearest spot that holds it. On a magnetic track it is taken
/// out, the others close up, and it goes between the two where its start comes nearest to `time`:
/// a move there reorders. The gap it leaves on a magnetic track closes too.
///
/// Refused when the clip or track is gone, either track is locked, or the kinds differ.
Outcome<Placed> moveClip(Project project, Id const& clipID, double time,
                         std::optional<Id> const& toTrack = std::nullopt);

/// The result of a nudge.
struct Nudged {
    Project project;
    double by = 0; ///< Seconds; less than asked where a neighbour or time 0 is near.
};

/// Moves clips of free tracks by `seconds`, together and keeping their distances, up to the
/// nearest obstacle: a clip that is not one of them, or time 0. They never jump over a clip.
///
/// Refused when a clip is gone, its track locked or magnetic, or when they touch the obstacle.
Outcome<Nudged> nudgeClips(Project project, std::span<Id const> clipIDs, double seconds);

/// The result of a removal.
struct Removed {
    Project project;
    bool closedGap = false; ///< Whether later clips of a magnetic track moved back.
};

/// Deletes a clip. On a magnetic track the clips after it move back by its length.
///
/// Refused when the clip is gone or its track is locked.
Outcome<Removed> removeClip(Project project, Id const& clipID);

/// Deletes clips, all or none of them.
Outcome<Removed> removeClips(Project project, std::span<Id const> clipIDs);

} // namespace framewright
