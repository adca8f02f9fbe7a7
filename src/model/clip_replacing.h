#pragma once

#include "model/outcome.h"
#include "model/project.h"

#include <optional>

namespace framewright {

/// What takes a clip's place.
struct Replacement {
    enum class From {
        file,     ///< An asset of the project, from its start.
        timeline, ///< Another clip, which leaves its old spot.
    };
    From from = From::file;
    Id id; ///< The asset's or the clip's.
};

/// The result of a replacement.
struct Replaced {
    Project project;
    Id clipID;
    double length = 0;          ///< Of the new clip.
    double slotLength = 0;      ///< Of the replaced clip.
    std::optional<Id> fillerID; ///< The placeholder over the rest of the slot.

    bool isShorter() const;
};

/// Replaces a clip or placeholder, in its spot, by a file or another clip of the timeline.
///
/// A source at least as long takes the slot's length, a shorter one keeps its own. From a file the
/// clip keeps its id, level and placement. Another clip keeps its id and brings its own in-point,
/// level and placement; the replaced clip is gone, and the spot the other leaves closes on a
/// magnetic track. A photo lasts as long as the slot, up to 60 s.
///
///     magnetic   PPPPPAA   P by a file of 3 s:   PPPAA
///     free       PPPPPAA   P by a file of 3 s:   PPP..AA
///
/// Refused when a clip or the file is gone, a track it changes is locked, the clip would replace
/// itself, either is a text, the other clip has no file, or the kind does not fit the track.
Outcome<Replaced> replaceClip(Project project, Id const& clipID, Replacement const& with);

/// The same, with a placeholder over what a shorter source leaves of the slot.
///
///     either     PPPPPAA   P by a file of 3 s:   PPPppAA
///
/// The filler has the slot's name and note when that was a placeholder, else it is named after the
/// file. A rest too short for a clip gets no filler.
Outcome<Replaced> replaceClipReturningFiller(Project project, Id const& clipID,
                                             Replacement const& with, Id const& fillerID);

} // namespace framewright
