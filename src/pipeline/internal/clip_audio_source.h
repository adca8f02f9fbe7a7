#pragma once

#include "media/audio_reader.h"
#include "pipeline/internal/audio_source.h"

#include <list>
#include <utility>

namespace framewright {

/// The audio of a composition's files. Each track has its own decoders, which its clips use one
/// after the other; of many, those not used for longest are closed, but never what is playing. One
/// thread at a time.
class ClipAudioSource : public AudioSource {
public:
    /// `activity`: of all readers.
    explicit ClipAudioSource(ReadingActivity activity = {}) : m_activity(std::move(activity)) {}

    void read(CompositionTrackID track, CompositionSegment const& segment, std::int64_t first,
              std::span<float> interleaved) override;

private:
    struct Open {
        CompositionTrackID track;
        std::filesystem::path file;
        Id clipID; ///< Of the clip that was read last.
        MediaTimeRange timeRange;
        double lastRead; ///< When on the timeline, in seconds.
        AudioReader reader;
    };

    AudioReader& reader(CompositionTrackID track, CompositionSegment const& segment, double time);
    void open(CompositionTrackID track, CompositionSegment const& segment, double time);

    ReadingActivity m_activity;
    std::list<Open> m_open; ///< The one used last in front.
};

} // namespace framewright
