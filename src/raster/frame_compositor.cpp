#include "raster/frame_compositor.h"

#include "media/media_error.h"
#include "raster/internal/drawn_colors.h"
#include "raster/internal/layer_geometry.h"
#include "raster/internal/layer_painter.h"
#include "raster/internal/overlay_painter.h"

#include <algorithm>
#include <ranges>
#include <vector>

namespace framewright {

namespace {

PixelLayout layoutFor(ColorTags colors)
{
    return colors.isHDR() ? PixelLayout::yuv420p10() : PixelLayout::yuv420p8();
}

} // namespace

class FrameCompositor::Impl {
public:
    Impl(VideoComposition video, FrameSource& source) : m_video(std::move(video)), m_source(source)
    {
    }

    Frame draw(double time);

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

bool FrameCompositor::Impl::Drawn::isOpaque() const
{
    return weight == fullWeight && !(picture && picture->layout().hasAlpha);
}

bool FrameCompositor::Impl::Drawn::looksLike(Drawn const& other) const
{
    bool const samePicture = picture.has_value() == other.picture.has_value() &&
                             (!picture || picture->sharesPixelsWith(*other.picture));
    return samePicture && layer.placement == other.layer.placement && weight == other.weight &&
           layer.naturalSize == other.layer.naturalSize;
}

Frame FrameCompositor::Impl::draw(double time)
{
    auto const mediaTime = MediaTime::fromSeconds(time);
    std::size_t const index = m_video.instructionIndexAt(mediaTime);
    if (m_instruction != index)
        enter(index);
    std::vector<Drawn> stack = collect(time);
    OverlayPainter::Pictures overlays = overlaysAt(mediaTime);
    bool const isRepeated =
        m_last && overlays == m_lastOverlays &&
        std::ranges::equal(stack, m_lastStack,
                           [](Drawn const& a, Drawn const& b) { return a.looksLike(b); });
    if (overlays.empty())
        m_overlayPainter.forget();
    if (!isRepeated) {
        m_last = overlays.empty() && goesThrough(stack) ? *stack.front().picture
                                                        : paint(stack, overlays, time);
    }
    m_lastStack = std::move(stack);
    m_lastOverlays = std::move(overlays);
    return *m_last;
}

/// Works out what stays the same over an instruction.
void FrameCompositor::Impl::enter(std::size_t instruction)
{
    m_instruction = instruction;
    m_parts.clear();
    for (Layer const& layer : m_video.instructions[instruction].layers) {
        BlendWeight const weight = blendWeight(layer.opacity);
        auto const geometry = layerGeometry(layer, m_video.renderSize);
        if (geometry && weight > 0)
            m_parts.push_back({&layer, *geometry, weight});
    }
}

/// The layers that are seen at a time, front to back, with their pictures.
std::vector<FrameCompositor::Impl::Drawn> FrameCompositor::Impl::collect(double time)
{
    std::vector<Drawn> stack;
    for (Part const& part : m_parts) {
        bool const isHidden = std::ranges::any_of(stack, [&](Drawn const& above) {
            return above.isOpaque() && above.geometry.visible.contains(part.geometry.visible);
        });
        if (isHidden)
            continue;
        Drawn drawn{*part.layer, part.geometry, part.weight, std::nullopt};
        if (!part.layer->isBlackPlate) {
            drawn.picture = m_source.frame(*part.layer, time);
            if (!drawn.picture)
                continue;
        }
        stack.push_back(std::move(drawn));
    }
    return stack;
}

/// Whether the picture in front is already what would be drawn.
bool FrameCompositor::Impl::goesThrough(std::vector<Drawn> const& stack) const
{
    if (stack.size() != 1 || !stack.front().picture || !stack.front().isOpaque())
        return false;
    Drawn const& drawn = stack.front();
    Frame const& picture = *drawn.picture;
    PixelLayout const layout = picture.layout();
    return picture.width() == m_video.renderSize.width &&
           picture.height() == m_video.renderSize.height && layout == layoutFor(m_video.colors) &&
           drawnColors(picture.colors(), layout, picture.height()) == m_video.colors &&
           drawn.geometry.frame == canvas() && drawn.geometry.turn.isIdentity() &&
           drawn.layer.placement.uncropped;
}

Frame FrameCompositor::Impl::paint(std::vector<Drawn> const& stack,
                                   OverlayPainter::Pictures const& overlays, double time)
{
    Frame frame(m_video.renderSize.width, m_video.renderSize.height, layoutFor(m_video.colors),
                m_video.colors);
    bool const isCovered =
        !stack.empty() && stack.back().isOpaque() && stack.back().geometry.visible == canvas();
    if (!isCovered)
        LayerPainter::paintBlack(frame, canvas(), fullWeight);
    for (Drawn const& drawn : std::views::reverse(stack)) {
        if (!drawn.picture) {
            LayerPainter::paintBlack(frame, drawn.geometry.visible, drawn.weight);
            continue;
        }
        try {
            m_painter.paint(frame, *drawn.picture, drawn.layer.naturalSize, drawn.geometry,
                            drawn.weight);
        } catch (MediaError const& error) {
            throw MediaError(error.cause, "Can't draw " + m_source.name(drawn.layer, time) + ". " +
                                              error.what());
        }
    }
    m_overlayPainter.paint(frame, overlays);
    return frame;
}

/// Those that are seen at a time, the last one foremost.
OverlayPainter::Pictures FrameCompositor::Impl::overlaysAt(MediaTime time) const
{
    OverlayPainter::Pictures seen;
    for (Overlay const& overlay : m_video.instructions[*m_instruction].overlays) {
        if (overlay.timeRange.contains(time))
            seen.push_back(overlay.picture);
    }
    return seen;
}

FrameCompositor::FrameCompositor(VideoComposition video, FrameSource& source)
    : m_impl(std::make_unique<Impl>(std::move(video), source))
{
}
FrameCompositor::~FrameCompositor() = default;

Frame FrameCompositor::draw(double time)
{
    return m_impl->draw(time);
}

} // namespace framewright
