#pragma once

#include "model/outcome.h"
#include "model/project.h"

#include <cstddef>

namespace framewright {

/// A clip of a project that is being edited, by position: it stays valid when `edit` copies the
/// track's clips.
struct ClipSpot {
    Track* track = nullptr;
    std::size_t index = 0;

    Clip const& clip() const { return (*track->clips)[index]; }

    /// The clip, writable. Copies the track's clips when another project shares them.
    Clip& edit() const { return track->clips.edit()[index]; }
};

/// The clip, on a track that may be edited. Refused when it is gone or its track is locked.
Outcome<ClipSpot> editableClip(Project& project, Id const& clipID);

/// The track, when it may be edited. Refused when it is gone or locked.
Outcome<Track*> editableTrack(Project& project, Id const& trackID);

} // namespace framewright
