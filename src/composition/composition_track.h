#pragma once

#include "composition/media_time.h"
#include "model/id.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace framewright {

using CompositionTrackID = std::int32_t;

/// A stretch of a composition track that plays one file.
struct CompositionSegment {
    enum class Source { footage, still, black };

    Source source = Source::footage;
    std::filesystem::path file; ///< Empty for black.
    MediaTimeRange timeRange;   ///< On the timeline.
    /// Seconds into the file at the start of the time range. Not rounded to the media engine's
    /// 600ths: a cut at a frame of 29.97 a second must not show the frame before.
    double sourceStart = 0;

    Id clipID;        ///< Nil for the filler.
    std::string name; ///< For people: "clip 2 on Video 1".

    /// Seconds into the file at `time` seconds of the timeline.
    double sourceTimeAt(double time) const
    {
        return sourceStart + time - timeRange.start.seconds();
    }

    bool operator==(CompositionSegment const&) const = default;
};

/// The frames or the audio that one track plays.
struct CompositionTrack {
    enum class Kind { video, audio };

    CompositionTrackID id = 0;
    Kind kind = Kind::video;
    /// By their starts. Only in documents that other programs wrote do they overlap.
    std::vector<CompositionSegment> segments;

    /// The segment of a clip that covers a time; null when there is none.
    CompositionSegment const* segmentAt(MediaTime time, Id const& clipID) const;

    bool operator==(CompositionTrack const&) const = default;
};

} // namespace framewright
