#pragma once

#include "composition/composition_track.h"

#include <cstdint>
#include <span>

namespace framewright {

/// Provides the audio of segments.
class AudioSource {
public:
    virtual ~AudioSource() = default;

    /// Fills `interleaved` (left, right, …) with 48 kHz sound of the segment's file from sample
    /// `first` of the file on; silence before its beginning and after its end.
    /// Throws MediaError, which names the clip and the file.
    virtual void read(CompositionTrackID track, CompositionSegment const& segment,
                      std::int64_t first, std::span<float> interleaved) = 0;
};

} // namespace framewright
