#include "raster/internal/overlay_painter.h"

#include "raster/internal/color_cube.h"
#include "raster/internal/plane_blend.h"
#include "text/placed_image.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace framewright {

namespace {

constexpr PixelLayout coverageLayout{PixelLayout::Model::gray, 8, 0, 0, false};

/// A colour in BT.709, limited range, 8 bits, times how much of it is seen (0 to 1).
struct WeightedYUV {
    double y = 0;
    double u = 0;
    double v = 0;
    double weight = 0;

    void operator+=(WeightedYUV const& other)
    {
        y += other.y;
        u += other.u;
        v += other.v;
        weight += other.weight;
    }
};

WeightedYUV fromPremultiplied(std::uint8_t const* rgba)
{
    double const red = rgba[0] / 255.0, green = rgba[1] / 255.0, blue = rgba[2] / 255.0;
    double const weight = rgba[3] / 255.0;
    double const luma = 0.2126 * red + 0.7152 * green + 0.0722 * blue;
    return {16 * weight + 219 * luma, 128 * weight + 224 * (blue - luma) / 1.8556,
            128 * weight + 224 * (red - luma) / 1.5748, weight};
}

void put(Frame::WritablePlane const& plane, int x, int y, double value, int bitDepth)
{
    int const scaled = int(std::lround(std::clamp(value, 0.0, 255.0) * (1 << (bitDepth - 8))));
    std::uint8_t* const row = plane.data + y * plane.stride;
    if (bitDepth == 8)
        row[x] = std::uint8_t(scaled);
    else
        reinterpret_cast<std::uint16_t*>(row)[x] = std::uint16_t(scaled);
}

/// The part of the image that lies on the canvas, with even edges; empty when none does.
PixelRect drawnPart(PlacedImage const& image, Frame const& canvas)
{
    PixelRect const visible{std::max(0, image.x), std::max(0, image.y),
                            std::min(canvas.width(), image.x + image.width),
                            std::min(canvas.height(), image.y + image.height)};
    if (visible.isEmpty())
        return {};
    return {visible.left & ~1, visible.top & ~1, (visible.right + 1) & ~1,
            (visible.bottom + 1) & ~1};
}

} // namespace

OverlayPainter::Converted OverlayPainter::converted(PlacedImage const& image,
                                                    PixelRect const& drawn, Frame const& canvas)
{
    int const width = drawn.width(), height = drawn.height();
    int const depth = canvas.layout().bitDepth;
    Converted made{Frame(width, height, canvas.layout(), canvas.colors()),
                   Frame(width, height, coverageLayout, {}),
                   Frame(width / 2, height / 2, coverageLayout, {})};
    std::array const planes = {made.picture.writablePlane(0), made.picture.writablePlane(1),
                               made.picture.writablePlane(2)};
    Frame::WritablePlane const mask = made.mask.writablePlane(0);
    Frame::WritablePlane const chromaMask = made.chromaMask.writablePlane(0);

    auto const pixel = [&](int x, int y) {
        int const column = drawn.left + x - image.x, row = drawn.top + y - image.y;
        if (column < 0 || row < 0 || column >= image.width || row >= image.height)
            return WeightedYUV();
        return fromPremultiplied(&image.pixels[(std::size_t(row) * image.width + column) * 4]);
    };
    for (int y = 0; y < height; y += 2) {
        for (int x = 0; x < width; x += 2) {
            WeightedYUV four;
            for (int n = 0; n < 4; ++n) {
                WeightedYUV const one = pixel(x + n % 2, y + n / 2);
                put(mask, x + n % 2, y + n / 2, one.weight * 255, 8);
                put(planes[0], x + n % 2, y + n / 2, one.weight > 0 ? one.y / one.weight : 0,
                    depth);
                four += one;
            }
            put(chromaMask, x / 2, y / 2, four.weight * 255 / 4, 8);
            put(planes[1], x / 2, y / 2, four.weight > 0 ? four.u / four.weight : 0, depth);
            put(planes[2], x / 2, y / 2, four.weight > 0 ? four.v / four.weight : 0, depth);
        }
    }
    if (auto const cube = ColorCube::between(ColorTags::bt709(), canvas.colors()))
        cube->convert(made.picture, wholeOf(made.picture));
    return made;
}

OverlayPainter::Kept OverlayPainter::kept(std::shared_ptr<OverlayImage const> const& picture,
                                          Frame const& canvas)
{
    auto const image = picture->draw();
    PixelRect const drawn = drawnPart(*image, canvas);
    Kept made{picture, drawn, {}};
    if (!drawn.isEmpty())
        made.converted.push_back(converted(*image, drawn, canvas));
    return made;
}

void OverlayPainter::paint(Frame& canvas, Pictures const& pictures)
{
    std::vector<Kept> keeping;
    int const bytes = canvas.layout().bytesPerSample();
    for (auto const& picture : pictures) {
        auto const known = std::ranges::find(m_kept, picture, &Kept::picture);
        keeping.push_back(known != m_kept.end() ? *known : kept(picture, canvas));
        PixelRect const& drawn = keeping.back().drawn;
        for (Converted const& made : keeping.back().converted) {
            for (int i = 0; i < 3; ++i) {
                int const shift = i > 0 ? 1 : 0;
                blendPlane(partOf(canvas.writablePlane(i), drawn.left >> shift, drawn.top >> shift,
                                  drawn.width() >> shift, drawn.height() >> shift, bytes),
                           made.picture.plane(i), (i > 0 ? made.chromaMask : made.mask).plane(0),
                           fullWeight, bytes);
            }
        }
    }
    m_kept = std::move(keeping);
}

} // namespace framewright
