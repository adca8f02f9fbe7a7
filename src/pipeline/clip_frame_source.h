#pragma once

#include "composition/composition.h"
#include "pipeline/open_files.h"
#include "raster/frame_compositor.h"

#include <map>
#include <memory>

namespace framewright {

/// The pictures of a composition's files. One thread at a time.
class ClipFrameSource : public FrameSource {
public:
    enum class Reading {
        forward,  ///< From beginning to end: each track has its own decoders, closed once they are
                  ///< not needed soon.
        anywhere, ///< At single times: decoders are left open for the next one.
    };

    /// All must outlive it.
    ClipFrameSource(BuiltComposition const& composition, OpenReaders& readers, ReadPhotos& photos,
                    Reading reading);

    std::optional<Frame> frame(Layer const& layer, double time) override;
    std::string name(Layer const& layer, double time) const override;

private:
    struct Playing { ///< What a track shows at the moment.
        CompositionSegment const* segment = nullptr;
        std::shared_ptr<VideoReader> reader;
        std::optional<Frame> photo;
    };

    Frame footage(CompositionTrack const& track, CompositionSegment const& segment, double time);
    Frame still(Layer const& layer, CompositionTrack const& track,
                CompositionSegment const& segment, double time);
    void closeFinished(double time);
    void leave(CompositionTrack const& track, double time);

    BuiltComposition const& m_composition;
    OpenReaders& m_readers;
    ReadPhotos& m_photos;
    Reading m_reading;
    std::map<CompositionTrackID, Playing> m_playing;
};

} // namespace framewright
