#pragma once

#include "composition/composition.h"
#include "media/frame.h"

#include <memory>
#include <optional>
#include <string>

namespace framewright {

/// Provides the frames of layers.
class FrameSource {
public:
    virtual ~FrameSource() = default;

    /// The frame of the layer's clip at `time` seconds of the timeline, as stored: in any format
    /// and size, not rotated. Asked again, the same frame shares its pixels. Nothing when the track
    /// plays nothing there; the layer is then skipped.
    /// Throws MediaError, which names the clip and the file.
    virtual std::optional<Frame> frame(Layer const& layer, double time) = 0;

    /// The clip's name in error messages.
    virtual std::string name(Layer const& layer, double time) const = 0;
};

/// Composites the frames of a composition. One thread at a time.
///
/// It avoids work: covered layers are never decoded, a frame that already has the canvas's size,
/// format and colours is passed through, and if nothing changed since the last frame that one is
/// returned again.
class FrameCompositor {
public:
    /// The source must outlive it.
    FrameCompositor(VideoComposition video, FrameSource& source);
    ~FrameCompositor();

    /// The frame at `time` seconds: in the composition's size and colours, planar 4:2:0 with 8
    /// bits, or 10 for HLG. It may share its pixels with a source's or with an earlier one.
    Frame draw(double time);

private:
    class Impl;
    std::unique_ptr<Impl> m_impl;
};

} // namespace framewright
