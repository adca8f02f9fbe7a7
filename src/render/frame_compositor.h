#pragma once

#include "media/frame.h"
#include "render/composition.h"
#include "render/layer_geometry.h"
#include "render/layer_painter.h"
#include "render/overlay_painter.h"

#include <optional>
#include <string>
#include <vector>

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

    /// The picture at `time` seconds: in the composition's size and colours, planar 4:2:0 with 8
    /// bits, or 10 for HLG. It may share its pixels with a source's or with an earlier one.
    Frame draw(double time);

    PixelSize size() const { return m_video.renderSize; }

private:
    struct Part { ///< A layer that something may be seen of.
        Layer const* layer;
        LayerGeometry geometry;
        BlendWeight weight;
    };
    struct Drawn { ///< A layer with its picture; a black plate has none.
        Layer layer;
        LayerGeometry geometry;
        BlendWeight weight;
        std::optional<Frame> picture;

        bool isOpaque() const;
        bool looksLike(Drawn const& other) const;
    };

    void enter(std::size_t instruction);
    std::vector<Drawn> collect(double time);
    OverlayPainter::Pictures overlaysAt(MediaTime time) const;
    bool goesThrough(std::vector<Drawn> const& stack) const;
    Frame paint(std::vector<Drawn> const& stack, OverlayPainter::Pictures const& overlays,
                double time);
    PixelRect canvas() const { return {0, 0, m_video.renderSize.width, m_video.renderSize.height}; }

    VideoComposition m_video;
    FrameSource& m_source;
    LayerPainter m_painter;
    OverlayPainter m_overlayPainter;
    std::optional<std::size_t> m_instruction; ///< The one that `m_parts` belong to.
    std::vector<Part> m_parts;                ///< Front to back.
    std::vector<Drawn> m_lastStack;
    OverlayPainter::Pictures m_lastOverlays;
    std::optional<Frame> m_last;
};

} // namespace framewright
