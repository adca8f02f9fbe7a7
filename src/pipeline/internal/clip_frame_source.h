#pragma once

#include "composition/composition.h"
#include "pipeline/frame_drawer.h"
#include "pipeline/internal/open_files.h"
#include "pipeline/internal/opening_ahead.h"
#include "raster/frame_compositor.h"

#include <map>
#include <memory>

namespace framewright {

/// The frames of a composition's clips. One thread at a time.
class ClipFrameSource : public FrameSource {
public:
    /// The files it uses outlive it, so that a source for an edited composition goes on with them.
    struct Files {
        OpenReaders& readers;
        OpenPhotos& photos;
        OpeningAhead& ahead;
    };

    /// `composition` and what `files` refers to must outlive it.
    ClipFrameSource(BuiltComposition const& composition, Files files,
                    FrameDrawer::Options const& options);

    /// Has the decoders opened that are needed soon after `time`, one per track.
    void openAhead(double time);

    std::optional<Frame> frame(Layer const& layer, double time) override;
    std::string name(Layer const& layer, double time) const override;

private:
    struct Playing { ///< What a track shows now.
        CompositionSegment const* segment = nullptr;
        std::shared_ptr<VideoReader> reader;
        std::optional<Frame> photo;
    };

    Frame footage(CompositionTrack const& track, CompositionSegment const& segment, double time);
    Frame still(Layer const& layer, CompositionTrack const& track,
                CompositionSegment const& segment, double time);
    std::shared_ptr<VideoReader> reader(CompositionTrack const& track,
                                        CompositionSegment const& segment, double time);
    CompositionSegment const* opensNext(CompositionTrack const& track, double time) const;
    bool isVisible(CompositionTrack const& track, CompositionSegment const& segment) const;
    bool isForward() const { return m_options.order == FrameDrawer::Order::forward; }
    void report(CompositionSegment const& segment, double time) const;
    void closeFinished(double time);
    void leave(CompositionTrack const& track, double time);

    BuiltComposition const& m_composition;
    Files m_files;
    FrameDrawer::Options const& m_options;
    std::map<CompositionTrackID, Playing> m_playing;
};

} // namespace framewright
