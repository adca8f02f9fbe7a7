#include "raster/internal/layer_painter.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace framewright {

namespace {

constexpr PixelLayout maskLayout{PixelLayout::Model::gray, 8, 0, 0, false};

/// From pixels of the natural size to those of the decoded picture. Edges that are off a whole
/// pixel by rounding only are put there: unscaled pictures are then copied, not filtered.
Rect inPicture(Rect const& rect, Size natural, Frame const& picture)
{
    auto const snapped = [](double edge) {
        double const whole = std::round(edge);
        return std::abs(edge - whole) < 1e-6 ? whole : edge;
    };
    double const x = picture.width() / natural.width, y = picture.height() / natural.height;
    double const left = snapped(rect.x * x), top = snapped(rect.y * y);
    return {left, top, snapped(rect.right() * x) - left, snapped(rect.bottom() * y) - top};
}

/// The planes of the even rectangle `where` of a 4:2:0 canvas.
FrameTarget partOfCanvas(Frame& canvas, PixelRect const& where)
{
    FrameTarget target{where.width(),   where.height(),    canvas.layout(),
                       canvas.colors(), ChromaPlace::left, {}};
    for (int i = 0; i < 3; ++i) {
        int const shift = i > 0 ? 1 : 0;
        target.planes[std::size_t(i)] = partOf(
            canvas.writablePlane(i), where.left >> shift, where.top >> shift,
            where.width() >> shift, where.height() >> shift, canvas.layout().bytesPerSample());
    }
    return target;
}

/// The samples of a scaled plane that belong to the layer, without the margin.
Frame::Plane withoutMargin(Frame const& scaled, int index, int margin)
{
    Frame::Plane const plane = scaled.plane(index);
    bool const isChroma = index == 1 || index == 2;
    // Two luma margins are one chroma sample's width, which is left of the picture.
    int const width = isChroma ? plane.width - margin : plane.width - 2 * margin;
    return partOf(plane, margin, 0, width, plane.height, scaled.layout().bytesPerSample());
}

/// The chroma samples [from, to) that `visible` luma samples [first, last) cover as a whole.
struct WholeSamples {
    int from;
    int to;
};

WholeSamples wholeChroma(int first, int last)
{
    return {(first + 1) / 2, last / 2};
}

/// Chroma at odd edges is half the layer's and half of what lies beneath.
void blendChroma(Frame::WritablePlane const& to, Frame::Plane const& from, PixelRect const& visible,
                 PixelRect const& drawn, BlendWeight weight, int bytesPerSample)
{
    WholeSamples const across = wholeChroma(visible.left - drawn.left, visible.right - drawn.left);
    WholeSamples const down = wholeChroma(visible.top - drawn.top, visible.bottom - drawn.top);
    auto const blendPart = [&](int left, int top, int right, int bottom, int parts) {
        if (left >= right || top >= bottom)
            return;
        blendPlane(partOf(to, left, top, right - left, bottom - top, bytesPerSample),
                   partOf(from, left, top, right - left, bottom - top, bytesPerSample),
                   weight / parts, bytesPerSample);
    };
    int const columns[] = {0, across.from, std::max(across.from, across.to), to.width};
    int const rows[] = {0, down.from, std::max(down.from, down.to), to.height};
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            int const parts = (row == 1 ? 1 : 2) * (column == 1 ? 1 : 2);
            blendPart(columns[column], rows[row], columns[column + 1], rows[row + 1], parts);
        }
    }
}

/// Makes a mask 0 outside of the visible part.
void clearOutside(Frame& mask, PixelRect const& visible, PixelRect const& drawn)
{
    Frame::WritablePlane const plane = mask.writablePlane(0);
    auto const clear = [&](int left, int top, int right, int bottom) {
        blendPlane(partOf(plane, left, top, right - left, bottom - top, 1), 0, fullWeight, 1);
    };
    clear(0, 0, visible.left - drawn.left, plane.height);
    clear(visible.right - drawn.left, 0, plane.width, plane.height);
    clear(0, 0, plane.width, visible.top - drawn.top);
    clear(0, visible.bottom - drawn.top, plane.width, plane.height);
}

} // namespace

void LayerPainter::paint(Frame& canvas, Frame const& picture, Size naturalSize,
                         LayerGeometry const& geometry, BlendWeight weight)
{
    Rect const crop = inPicture(geometry.crop, naturalSize, picture);
    Rect const region = inPicture(geometry.region, naturalSize, picture);
    if (paintDirectly(canvas, picture, crop, region, geometry, weight))
        return;

    PixelRect const& drawn = geometry.drawn;
    PixelRect const& visible = geometry.visible;
    Frame const layer = scaled(canvas, picture, crop, region, geometry);
    std::optional<Frame> const seen = mask(picture, crop, region, geometry);
    FrameTarget const target = partOfCanvas(canvas, drawn);
    int const bytes = canvas.layout().bytesPerSample();
    for (int i = 0; i < 3; ++i) {
        Frame::WritablePlane const& to = target.planes[std::size_t(i)];
        if (seen && i == 0) {
            blendPlane(to, layer.plane(0), seen->plane(0), weight, bytes);
        } else if (seen) {
            Frame half(to.width, to.height, maskLayout, {});
            halveMask(seen->plane(0), half.writablePlane(0));
            blendPlane(to, layer.plane(i), half.plane(0), weight, bytes);
        } else if (i == 0) {
            int const x = visible.left - drawn.left, y = visible.top - drawn.top;
            blendPlane(partOf(to, x, y, visible.width(), visible.height(), bytes),
                       partOf(layer.plane(0), x, y, visible.width(), visible.height(), bytes),
                       weight, bytes);
        } else {
            blendChroma(to, layer.plane(i), visible, drawn, weight, bytes);
        }
    }
}

/// The usual case without a detour: the scaler writes into the canvas itself.
bool LayerPainter::paintDirectly(Frame& canvas, Frame const& picture, Rect const& crop,
                                 Rect const& region, LayerGeometry const& geometry,
                                 BlendWeight weight)
{
    // The scaler may write on to the end of an aligned row, so it gets whole rows only.
    bool const coversRows = geometry.visible.left == 0 && geometry.visible.right == canvas.width();
    bool const isPlain = weight == fullWeight && geometry.turn.isIdentity() &&
                         !picture.layout().hasAlpha && geometry.visible == geometry.drawn;
    if (!coversRows || !isPlain)
        return false;
    FrameTarget const target = partOfCanvas(canvas, geometry.drawn);
    if (!FrameScaler::canWriteTo(target))
        return false;
    m_scaler.scale(picture, crop, region, target);
    return true;
}

/// What goes into `drawn`: scaled, in the canvas's format, and turned.
Frame LayerPainter::scaled(Frame const& canvas, Frame const& picture, Rect const& crop,
                           Rect const& region, LayerGeometry const& geometry)
{
    Frame scaled(geometry.scaledWidth, geometry.scaledHeight, canvas.layout(), canvas.colors());
    m_scaler.scale(picture, crop, region, wholeOf(scaled, geometry.chromaPlace));
    if (geometry.turn.isIdentity())
        return scaled;
    Frame turned(geometry.drawn.width(), geometry.drawn.height(), canvas.layout(), canvas.colors());
    for (int i = 0; i < 3; ++i)
        turnPlane(withoutMargin(scaled, i, geometry.margin), geometry.turn, turned.writablePlane(i),
                  canvas.layout().bytesPerSample());
    return turned;
}

/// How much of each pixel of `drawn` is seen; nothing when the picture is opaque.
std::optional<Frame> LayerPainter::mask(Frame const& picture, Rect const& crop, Rect const& region,
                                        LayerGeometry const& geometry)
{
    if (!picture.layout().hasAlpha)
        return std::nullopt;
    Frame scaled(geometry.scaledWidth, geometry.scaledHeight, maskLayout, {});
    m_scaler.scaleAlpha(picture, crop, region, wholeOf(scaled, ChromaPlace::left));
    Frame mask(geometry.drawn.width(), geometry.drawn.height(), maskLayout, {});
    turnPlane(withoutMargin(scaled, 0, geometry.margin), geometry.turn, mask.writablePlane(0), 1);
    clearOutside(mask, geometry.visible, geometry.drawn);
    return mask;
}

void LayerPainter::paintBlack(Frame& canvas, PixelRect const& where, BlendWeight weight)
{
    int const depth = canvas.layout().bitDepth;
    int const bytes = canvas.layout().bytesPerSample();
    blendPlane(partOf(canvas.writablePlane(0), where.left, where.top, where.width(), where.height(),
                      bytes),
               16 << (depth - 8), weight, bytes);
    int const left = where.left / 2, top = where.top / 2;
    int const right = (where.right + 1) / 2, bottom = (where.bottom + 1) / 2;
    for (int i = 1; i < 3; ++i)
        blendPlane(partOf(canvas.writablePlane(i), left, top, right - left, bottom - top, bytes),
                   128 << (depth - 8), weight, bytes);
}

} // namespace framewright
