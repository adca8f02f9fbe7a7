#pragma once

#include "composition/composition.h"
#include "media/frame.h"

#include <memory>
#include <optional>
#include <string>

namespace framewright {

/// Where the pictures of layers come from.
class FrameSource {
public:
    virtual ~FrameSource() = default;

    /// The picture of the layer's clip at `time` seconds of the timeline, as stored: in any
    /// format and size, not turned. The same picture shares its pixels each time. Nothing when the
    /// track plays nothing there: the layer is left out then.
    /// Throws MediaError, which names the clip and the file.
    virtual std::optional<Frame> frame(Layer const& layer, double time) = 0;

    /// What a picture is called in a sentence for people.
    virtual std::string name(Layer const& layer, double time) const = 0;
};

/// Draws the pictures of a composition. One thread at a time.
///
/// It does as little as it can: layers that nothing is seen of are never asked for, a picture that
/// fits as it is goes through untouched, and one whose inputs are those of the picture before is
/// that picture again.
class FrameCompositor {
public:
    /// The source must outlive it.
    FrameCompositor(VideoComposition video, FrameSource& source);
    ~FrameCompositor();

    /// The picture at `time` seconds: in the composition's size and colours, planar 4:2:0 with 8
    /// bits, or 10 for HLG. It may share its pixels with a source's or with an earlier one.
    Frame draw(double time);

private:
    class Impl;
    std::unique_ptr<Impl> m_impl;
};

} // namespace framewright
