#pragma once

#include "composition/composition_track.h"
#include "composition/media_time.h"

#include <cstdint>
#include <map>
#include <span>
#include <vector>

namespace framewright {

/// The levels of the clips of the sound tracks over time.
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

    /// What one clip is heard at, with the levels of its track.
    struct ClipLevels {
        Id clipID;
        std::vector<Step> steps; ///< In time order.

        /// The gain of each sample of the timeline from sample `first` on.
        ///
        /// Linear: 0 is silence, 1 leaves the sound as it is. Ramps are exact to the sample; before
        /// the first step and after the last one its level holds. 1 when there is no step.
        void gains(std::int64_t first, std::span<float> gains) const;

        /// That of one sample: at a cut what it begins with, or what it was about to reach.
        float gain(std::int64_t sample) const;

        bool operator==(ClipLevels const&) const = default;
    };

    /// Of each sound track all clips by their starts, also those that play nothing.
    std::map<CompositionTrackID, std::vector<ClipLevels>> tracks;

    bool operator==(AudioMix const&) const = default;
};

} // namespace framewright
