#include "raster/internal/frame_scaler.h"

#include "media/media_error.h"
#include "raster/internal/color_cube.h"
#include "raster/internal/drawn_colors.h"

#include <zimg.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <list>
#include <new>
#include <optional>
#include <string>
#include <vector>

namespace framewright {

namespace {

constexpr std::size_t alignment = 64;
constexpr std::size_t keptGraphs = 32;

bool isAligned(void const* data, std::ptrdiff_t stride)
{
    return reinterpret_cast<std::uintptr_t>(data) % alignment == 0 && stride > 0 &&
           std::size_t(stride) % alignment == 0;
}

/// A frame's format, as zimg needs it.
struct Format {
    int width = 0;
    int height = 0;
    PixelLayout layout;
    ColorTags colors;
    ChromaPlace chromaPlace = ChromaPlace::left;
    Rect region; ///< Empty for the whole.

    bool operator==(Format const&) const = default;
};

zimg_chroma_location_e location(ChromaPlace place)
{
    switch (place) {
    case ChromaPlace::center:
        return ZIMG_CHROMA_CENTER;
    case ChromaPlace::top:
        return ZIMG_CHROMA_TOP;
    case ChromaPlace::bottom:
        return ZIMG_CHROMA_BOTTOM;
    default:
        return ZIMG_CHROMA_LEFT;
    }
}

/// Whether the matrix alone doesn't tell how colours are coded: it is made from the primaries, or
/// applied to light instead of signal.
bool dependsOnLight(int matrix)
{
    constexpr int constantLuminance = 10, derived = 12, derivedConstant = 13, ictcp = 14;
    return matrix == constantLuminance || matrix == derived || matrix == derivedConstant ||
           matrix == ictcp;
}

zimg_image_format described(Format const& format, bool convertsLight)
{
    zimg_image_format image;
    zimg_image_format_default(&image, ZIMG_API_VERSION);
    PixelLayout const& layout = format.layout;
    bool const isGray = layout.model == PixelLayout::Model::gray;
    bool const isRGB = layout.model == PixelLayout::Model::gbr;
    image.width = unsigned(format.width);
    image.height = unsigned(format.height);
    image.pixel_type = layout.bytesPerSample() == 1 ? ZIMG_PIXEL_BYTE : ZIMG_PIXEL_WORD;
    image.depth = unsigned(layout.bitDepth);
    image.pixel_range = format.colors.isFullRange ? ZIMG_RANGE_FULL : ZIMG_RANGE_LIMITED;
    image.color_family = isGray ? ZIMG_COLOR_GREY : isRGB ? ZIMG_COLOR_RGB : ZIMG_COLOR_YUV;
    if (!isGray && !isRGB) {
        image.subsample_w = unsigned(layout.chromaShiftX);
        image.subsample_h = unsigned(layout.chromaShiftY);
        image.chroma_location = location(format.chromaPlace);
    }
    if (!isGray || convertsLight)
        image.matrix_coefficients = zimg_matrix_coefficients_e(format.colors.matrix);
    if (convertsLight) {
        image.transfer_characteristics = zimg_transfer_characteristics_e(format.colors.transfer);
        image.color_primaries = zimg_color_primaries_e(format.colors.primaries);
    }
    if (!format.region.isEmpty())
        image.active_region = {format.region.x, format.region.y, format.region.width,
                               format.region.height};
    return image;
}

struct FreeGraph {
    void operator()(zimg_filter_graph* graph) const { zimg_filter_graph_free(graph); }
};
using Graph = std::unique_ptr<zimg_filter_graph, FreeGraph>;

[[noreturn]] void throwLastError()
{
    char reason[256] = "";
    auto const code = zimg_get_last_error(reason, sizeof reason);
    zimg_clear_last_error();
    if (code == ZIMG_ERROR_OUT_OF_MEMORY)
        throw std::bad_alloc();
    throw MediaError(MediaError::Cause::unsupported,
                     std::string("The picture's colours can't be converted (") + reason + ").");
}

Graph buildGraph(Format const& from, Format const& to)
{
    zimg_graph_builder_params parameters;
    zimg_graph_builder_params_default(&parameters, ZIMG_API_VERSION);
    // Catmull-Rom: sharp, hardly any ringing; zimg widens it when a picture gets smaller.
    parameters.resample_filter = parameters.resample_filter_uv = ZIMG_RESIZE_BICUBIC;
    parameters.filter_param_a = parameters.filter_param_a_uv = 0;
    parameters.filter_param_b = parameters.filter_param_b_uv = 0.5;
    // Not ZIMG_CPU_AUTO_64B: the 512-bit code of zimg 3.0.4 gets whole columns wrong at some ratios
    // (46 to 20, 338 to 168).
    parameters.cpu_type = ZIMG_CPU_AUTO;
    parameters.allow_approximate_gamma = 1;

    // Going through linear light costs several times more, so only where the result differs.
    bool const convertsLight =
        from.colors.transfer != to.colors.transfer ||
        from.colors.primaries != to.colors.primaries ||
        (from.colors.matrix != to.colors.matrix && dependsOnLight(from.colors.matrix));
    zimg_image_format const source = described(from, convertsLight);
    zimg_image_format const target = described(to, convertsLight);
    Graph graph(zimg_filter_graph_build(&source, &target, &parameters));
    if (!graph)
        throwLastError();
    return graph;
}

/// A frame with even sides and aligned rows: the frame itself, or a copy whose last row and
/// column are repeated.
Frame suited(Frame const& frame)
{
    PixelLayout const layout = frame.layout();
    bool const isEven = frame.width() % (1 << layout.chromaShiftX) == 0 &&
                        frame.height() % (1 << layout.chromaShiftY) == 0;
    bool isSuited = layout.model != PixelLayout::Model::yuv || isEven;
    for (int i = 0; i < layout.planeCount(); ++i)
        isSuited = isSuited && isAligned(frame.plane(i).data, frame.plane(i).stride);
    if (isSuited)
        return frame;

    int const stepX = 1 << layout.chromaShiftX, stepY = 1 << layout.chromaShiftY;
    Frame copy((frame.width() + stepX - 1) / stepX * stepX,
               (frame.height() + stepY - 1) / stepY * stepY, layout, frame.colors());
    auto const bytes = std::size_t(layout.bytesPerSample());
    for (int i = 0; i < layout.planeCount(); ++i) {
        Frame::Plane const from = frame.plane(i);
        Frame::WritablePlane const to = copy.writablePlane(i);
        for (int y = 0; y < to.height; ++y) {
            std::uint8_t const* source = from.data + std::min(y, from.height - 1) * from.stride;
            std::uint8_t* const row = to.data + y * to.stride;
            std::memcpy(row, source, std::size_t(from.width) * bytes);
            for (int x = from.width; x < to.width; ++x)
                std::memcpy(row + std::size_t(x) * bytes, row + std::size_t(x - 1) * bytes, bytes);
        }
    }
    return copy;
}

/// The whole pixels around `crop`, as zimg can take them: its first column is aligned, its sides
/// are multiples of the chroma steps.
struct Window {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
};

Window windowAround(Rect const& crop, Frame const& frame)
{
    PixelLayout const layout = frame.layout();
    int const stepX = 1 << layout.chromaShiftX, stepY = 1 << layout.chromaShiftY;
    int const columns = int(alignment) * stepX;
    auto const down = [](double value, int step) { return int(std::floor(value / step)) * step; };
    auto const up = [](double value, int step) { return int(std::ceil(value / step)) * step; };
    // Less than a thousandth of a pixel is rounding, not picture.
    constexpr double rounding = 0.001;
    Window window;
    window.x = std::clamp(down(crop.x + rounding, columns), 0, frame.width() - stepX);
    window.y = std::clamp(down(crop.y + rounding, stepY), 0, frame.height() - stepY);
    window.width =
        std::clamp(up(crop.right() - rounding, stepX), window.x + stepX, frame.width()) - window.x;
    window.height =
        std::clamp(up(crop.bottom() - rounding, stepY), window.y + stepY, frame.height()) -
        window.y;
    return window;
}

/// zimg's order of planes: red, green, blue, where a Frame has green first.
constexpr int rgbOrder[] = {2, 0, 1};

} // namespace

FrameTarget wholeOf(Frame& frame, ChromaPlace chromaPlace)
{
    FrameTarget target{frame.width(),  frame.height(), frame.layout(),
                       frame.colors(), chromaPlace,    {}};
    for (int i = 0; i < frame.layout().planeCount(); ++i)
        target.planes[std::size_t(i)] = frame.writablePlane(i);
    return target;
}

class FrameScaler::Impl {
public:
    void process(Frame const& source, std::optional<int> onlyPlane, Rect const& crop,
                 Rect const& region, FrameTarget const& target)
    {
        Frame const frame = suited(source);
        Window const window = windowAround(crop, frame);
        Format from{window.width,
                    window.height,
                    frame.layout(),
                    drawnColors(source.colors(), frame.layout(), source.height()),
                    frame.colors().chromaIsCentered ? ChromaPlace::center : ChromaPlace::left,
                    {region.x - window.x, region.y - window.y, region.width, region.height}};
        Format to{target.width,  target.height,      target.layout,
                  target.colors, target.chromaPlace, {}};
        if (onlyPlane) {
            from.layout = PixelLayout{PixelLayout::Model::gray, from.layout.bitDepth, 0, 0, false};
            from.colors = to.colors = ColorTags{.isFullRange = true};
        }

        zimg_image_buffer_const input{ZIMG_API_VERSION, {}};
        int const inputs = onlyPlane ? 1 : from.layout.planeCount() - from.layout.hasAlpha;
        for (int i = 0; i < inputs; ++i) {
            Frame::Plane const plane = frame.plane(onlyPlane.value_or(slot(from.layout, i)));
            bool const isChroma =
                !onlyPlane && from.layout.model == PixelLayout::Model::yuv && i > 0;
            int const x = isChroma ? window.x >> from.layout.chromaShiftX : window.x;
            int const y = isChroma ? window.y >> from.layout.chromaShiftY : window.y;
            input.plane[i] = {plane.data + y * plane.stride + x * from.layout.bytesPerSample(),
                              plane.stride, ZIMG_BUFFER_MAX};
        }
        zimg_image_buffer output{ZIMG_API_VERSION, {}};
        for (int i = 0; i < to.layout.planeCount(); ++i) {
            Frame::WritablePlane const& plane = target.planes[std::size_t(slot(to.layout, i))];
            output.plane[i] = {plane.data, plane.stride, ZIMG_BUFFER_MAX};
        }
        zimg_filter_graph const* const graph = graphFor(from, to);
        if (zimg_filter_graph_process(graph, &input, &output, scratchFor(graph), nullptr, nullptr,
                                      nullptr, nullptr) != ZIMG_ERROR_SUCCESS)
            throwLastError();
    }

private:
    struct Kept {
        Format from;
        Format to;
        Graph graph;
    };
    struct FreeScratch {
        void operator()(void* memory) const
        {
            ::operator delete(memory, std::align_val_t(alignment));
        }
    };

    static int slot(PixelLayout layout, int index)
    {
        return layout.model == PixelLayout::Model::gbr ? rgbOrder[index] : index;
    }

    zimg_filter_graph const* graphFor(Format const& from, Format const& to)
    {
        auto const found = std::ranges::find_if(
            m_graphs, [&](Kept const& kept) { return kept.from == from && kept.to == to; });
        if (found != m_graphs.end()) {
            m_graphs.splice(m_graphs.begin(), m_graphs, found);
        } else {
            m_graphs.push_front({from, to, buildGraph(from, to)});
            if (m_graphs.size() > keptGraphs)
                m_graphs.pop_back();
        }
        return m_graphs.front().graph.get();
    }

    void* scratchFor(zimg_filter_graph const* graph)
    {
        std::size_t needed = 0;
        if (zimg_filter_graph_get_tmp_size(graph, &needed) != ZIMG_ERROR_SUCCESS)
            throwLastError();
        if (needed > m_scratchSize) {
            m_scratch.reset();
            m_scratchSize = 0;
            m_scratch.reset(::operator new(needed, std::align_val_t(alignment)));
            m_scratchSize = needed;
        }
        return m_scratch.get();
    }

    std::list<Kept> m_graphs; ///< The one used last in front.
    std::unique_ptr<void, FreeScratch> m_scratch;
    std::size_t m_scratchSize = 0;
};

FrameScaler::FrameScaler() : m_impl(std::make_unique<Impl>()) {}
FrameScaler::~FrameScaler() = default;

bool FrameScaler::canWriteTo(FrameTarget const& target)
{
    for (int i = 0; i < target.layout.planeCount(); ++i) {
        Frame::WritablePlane const& plane = target.planes[std::size_t(i)];
        if (!isAligned(plane.data, plane.stride))
            return false;
    }
    return true;
}

void FrameScaler::scale(Frame const& source, Rect const& crop, Rect const& region,
                        FrameTarget const& target)
{
    ColorTags const colors = drawnColors(source.colors(), source.layout(), source.height());
    auto const cube = ColorCube::between(colors, target.colors);
    if (!cube)
        return m_impl->process(source, std::nullopt, crop, region, target);

    // Scaled as it is coded, then converted: of a large picture made small, only what is left.
    Frame scaled(target.width, target.height, PixelLayout::yuv420p10(),
                 ColorCube::inputColors(colors));
    m_impl->process(source, std::nullopt, crop, region, wholeOf(scaled, target.chromaPlace));
    cube->convert(scaled, target);
}

bool FrameScaler::canConvert(ColorTags const& colors)
{
    constexpr int bt2020 = 9;
    if (colors.matrix <= bt2020)
        return true;
    // Of the others only trying tells, as it depends on the light and the primaries too.
    PixelLayout const standard = PixelLayout::yuv420p8(), wide = PixelLayout::yuv420p10();
    Frame const sample(16, 16, colors.isHDR() ? wide : standard, colors);
    Rect const whole{0, 0, 16, 16};
    try {
        Frame shown(16, 16, standard, ColorTags::bt709());
        FrameScaler().scale(sample, whole, whole, wholeOf(shown));
        Frame bright(16, 16, wide, ColorTags::hlg());
        FrameScaler().scale(sample, whole, whole, wholeOf(bright));
        return true;
    } catch (MediaError const&) {
        return false;
    }
}

void FrameScaler::scaleAlpha(Frame const& source, Rect const& crop, Rect const& region,
                             FrameTarget const& target)
{
    m_impl->process(source, source.layout().planeCount() - 1, crop, region, target);
}

} // namespace framewright
