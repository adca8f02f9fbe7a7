#include "model/clip_lookup.h"

#include "model/edit_limits.h"

#include <algorithm>

namespace framewright {

Outcome<ClipSpot> editableClip(Project& project, Id const& clipID)
{
    for (Track& track : project.tracks) {
        auto const found = std::ranges::find(*track.clips, clipID, &Clip::id);
        if (found == track.clips->end())
            continue;
        if (track.isLocked)
            return lockedRefusal(track);
        return ClipSpot{&track, static_cast<std::size_t>(found - track.clips->begin())};
    }
    return Refusal{Reason::clipGone, Subject::clip(clipID)};
}

Outcome<Track*> editableTrack(Project& project, Id const& trackID)
{
    Track* const track = project.track(trackID);
    if (!track)
        return Refusal{Reason::trackGone, Subject::track(trackID)};
    if (track->isLocked)
        return lockedRefusal(*track);
    return track;
}

} // namespace framewright
