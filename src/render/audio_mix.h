#pragma once

#include "media/media_time.h"
#include "render/composition_track.h"

#include <map>
#include <span>
#include <vector>

namespace framewright {

/// The levels of the sound tracks over time.
struct AudioMix {
    static constexpr int sampleRate = 48000;

    /// A level that is set at the start of the range, or a straight ramp over it when the two
    /// volumes differ.
    struct Step {
        MediaTimeRange timeRange;
        float startVolume = 1;
        float endVolume = 1;

        bool operator==(Step const&) const = default;
    };

    std::map<CompositionTrackID, std::vector<Step>> steps; ///< Each in time order.

    /// The gain of each sample of a track from `from` seconds on: gains[n] is for the time
    /// from + n / 48000.
    ///
    /// Linear: 0 is silence, 1 leaves the sound as it is. Ramps are exact to the sample; after
    /// the last one its level holds. A track the mix has no entry for gets 1 throughout, and so
    /// does the time before a track's first step.
    void gains(CompositionTrackID trackID, double from, std::span<float> gains) const;

    bool operator==(AudioMix const&) const = default;
};

} // namespace framewright
