#include "raster/internal/layer_geometry.h"

#include <algorithm>
#include <cmath>

namespace framewright {

namespace {

/// No picture is drawn larger: a scale beyond it shows less than a source pixel on the canvas.
constexpr double farthest = 1 << 28;

int rounded(double edge)
{
    return int(std::lround(std::clamp(edge, -farthest, farthest)));
}

PixelRect roundedRect(Rect const& rect)
{
    return {rounded(rect.x), rounded(rect.y), rounded(rect.right()), rounded(rect.bottom())};
}

PixelRect evenAround(PixelRect const& rect)
{
    // The canvas has even sides, so this never leaves it.
    return {rect.left & ~1, rect.top & ~1, (rect.right + 1) & ~1, (rect.bottom + 1) & ~1};
}

/// A stretch of the shown picture, as a part of it: 0 is one edge, 1 the other.
struct Stretch {
    double from;
    double to;

    Stretch reversed() const { return {1 - to, 1 - from}; }
};

Stretch stretch(int from, int to, int frameFrom, int frameTo)
{
    double const length = double(frameTo) - frameFrom;
    return {(double(from) - frameFrom) / length, (double(to) - frameFrom) / length};
}

} // namespace

std::optional<LayerGeometry> layerGeometry(Layer const& layer, PixelSize canvas)
{
    Placement const& placement = layer.placement;
    LayerGeometry geometry;
    PixelRect const& frame = geometry.frame = roundedRect(placement.frame);
    geometry.visible = {std::max(0, frame.left), std::max(0, frame.top),
                        std::min(canvas.width, frame.right), std::min(canvas.height, frame.bottom)};
    if (frame.isEmpty() || geometry.visible.isEmpty() || layer.naturalSize.isEmpty())
        return std::nullopt;
    geometry.drawn = evenAround(geometry.visible);
    geometry.turn = turnOf(placement.transform);
    geometry.crop = placement.uncropped
                        ? Rect{0, 0, layer.naturalSize.width, layer.naturalSize.height}
                        : placement.crop;

    // Chroma lies above the left one of two luma samples. Where the turn brings that to another
    // side, the scaled picture has it on the side that becomes the left one. Only for the right
    // side there is no such place: then luma is scaled one pixel further out, so that what lies
    // left before the turn lies left after it too.
    Turn const& turn = geometry.turn;
    if (turn.transposes)
        geometry.chromaPlace = turn.flipsX ? ChromaPlace::bottom : ChromaPlace::top;
    else
        geometry.margin = turn.flipsX ? 1 : 0;

    PixelRect const& drawn = geometry.drawn;
    int const margin = geometry.margin;
    Stretch across = stretch(drawn.left - margin, drawn.right + margin, frame.left, frame.right);
    Stretch down = stretch(drawn.top, drawn.bottom, frame.top, frame.bottom);
    if (turn.flipsX)
        across = across.reversed();
    if (turn.flipsY)
        down = down.reversed();
    geometry.scaledWidth = drawn.width() + 2 * margin;
    geometry.scaledHeight = drawn.height();
    if (turn.transposes) {
        std::swap(across, down);
        std::swap(geometry.scaledWidth, geometry.scaledHeight);
    }
    Rect const& crop = geometry.crop;
    geometry.region = {crop.x + across.from * crop.width, crop.y + down.from * crop.height,
                       (across.to - across.from) * crop.width, (down.to - down.from) * crop.height};
    return geometry;
}

} // namespace framewright
