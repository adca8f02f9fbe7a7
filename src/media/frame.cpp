#include "media/frame.h"

#include "media/internal/frame_memory.h"
#include "media/internal/frame_storage.h"
#include "media/internal/pixel_format.h"

#include <array>
#include <limits>
#include <new>
#include <stdexcept>
#include <utility>

extern "C" {
#include <libavutil/frame.h>
#include <libavutil/imgutils.h>
#include <libavutil/pixdesc.h>
}

namespace framewright {

namespace {

/// Larger frames are a mistake or an attack.
constexpr std::size_t maxFrameBytes = std::size_t{4} << 30;

bool isChroma(PixelLayout layout, int index)
{
    return layout.model == PixelLayout::Model::yuv && (index == 1 || index == 2);
}

/// The length of a side after subsampling, rounded up: an odd side keeps its last sample.
int subsampled(int side, int shift)
{
    return (side + (1 << shift) - 1) >> shift;
}

struct PlaneSize {
    int width;
    int height;
};

PlaneSize planeSize(PixelLayout layout, int width, int height, int index)
{
    if (!isChroma(layout, index))
        return {width, height};
    return {subsampled(width, layout.chromaShiftX), subsampled(height, layout.chromaShiftY)};
}

/// The plane's index in AVFrame::data: alpha is always the fourth.
int slot(PixelLayout layout, int index)
{
    return layout.model == PixelLayout::Model::gray && index == 1 ? 3 : index;
}

std::size_t roundedUp(std::size_t bytes)
{
    return (bytes + rowAlignment - 1) / rowAlignment * rowAlignment;
}

} // namespace

Frame::Frame(int width, int height, PixelLayout layout, ColorTags colors)
    : m_storage(std::make_unique<Storage>(newFrame()))
{
    AVFrame& frame = *m_storage->av;
    AVPixelFormat const format = formatOf(layout);
    if (width <= 0 || height <= 0 || format == AV_PIX_FMT_NONE)
        throw std::bad_alloc();

    std::array<std::size_t, 4> offsets{};
    std::size_t bytes = 0;
    for (int i = 0; i < layout.planeCount(); ++i) {
        auto const [columns, rows] = planeSize(layout, width, height, i);
        std::size_t const stride =
            roundedUp(std::size_t(columns) * std::size_t(layout.bytesPerSample()));
        if (stride > std::size_t(std::numeric_limits<int>::max()) ||
            stride * std::size_t(rows) > maxFrameBytes)
            throw std::bad_alloc();
        frame.linesize[slot(layout, i)] = int(stride);
        offsets[std::size_t(i)] = bytes;
        bytes += stride * std::size_t(rows);
    }
    // SIMD code may read past the last row by up to a vector.
    AVBufferRef* const memory = frameMemory(bytes + rowAlignment);
    frame.buf[0] = memory;
    for (int i = 0; i < layout.planeCount(); ++i)
        frame.data[slot(layout, i)] = memory->data + offsets[std::size_t(i)];
    frame.extended_data = frame.data;
    frame.width = width;
    frame.height = height;
    frame.format = format;
    setColors(colors);
}

Frame frameOf(FrameHandle decoded)
{
    auto const format = static_cast<AVPixelFormat>(decoded->format);
    auto const layout = layoutOf(format);
    if (!layout)
        throw std::invalid_argument("A Frame cannot hold this pixel format.");
    AVPixelFormat const plain = formatOf(*layout);
    bool const isRGB = layout->model == PixelLayout::Model::gbr;
    if (plain != format || (isRGB && decoded->color_range == AVCOL_RANGE_UNSPECIFIED))
        decoded->color_range = AVCOL_RANGE_JPEG;
    decoded->format = plain;
    return Frame(std::make_unique<Frame::Storage>(std::move(decoded)));
}

Frame::Frame(std::unique_ptr<Storage> storage) noexcept : m_storage(std::move(storage)) {}

Frame::Frame(Frame const& other)
    : m_storage(
          std::make_unique<Storage>(made<FrameHandle>(av_frame_clone(other.m_storage->av.get()))))
{
}

Frame::Frame(Frame&&) noexcept = default;
Frame::~Frame() = default;

Frame& Frame::operator=(Frame other) noexcept
{
    std::swap(m_storage, other.m_storage);
    return *this;
}

int Frame::width() const
{
    return m_storage->av->width;
}

int Frame::height() const
{
    return m_storage->av->height;
}

PixelLayout Frame::layout() const
{
    return *layoutOf(static_cast<AVPixelFormat>(m_storage->av->format));
}

ColorTags Frame::colors() const
{
    return colorsOf(*m_storage->av);
}

void Frame::setColors(ColorTags colors)
{
    framewright::setColors(*m_storage->av, colors);
}

Frame::Plane Frame::plane(int index) const
{
    PixelLayout const planar = layout();
    auto const [columns, rows] = planeSize(planar, width(), height(), index);
    int const place = slot(planar, index);
    return {m_storage->av->data[place], m_storage->av->linesize[place], columns, rows};
}

Frame::WritablePlane Frame::writablePlane(int index)
{
    AVFrame& shared = *m_storage->av;
    if (!av_frame_is_writable(&shared)) {
        Frame copy(width(), height(), layout(), colors());
        AVFrame& own = *copy.m_storage->av;
        av_image_copy(own.data, own.linesize, const_cast<std::uint8_t const**>(shared.data),
                      shared.linesize, static_cast<AVPixelFormat>(shared.format), width(),
                      height());
        if (av_frame_copy_props(&own, &shared) < 0)
            throw std::bad_alloc();
        *this = std::move(copy);
    }
    Plane const shown = plane(index);
    return {const_cast<std::uint8_t*>(shown.data), shown.stride, shown.width, shown.height};
}

bool Frame::sharesPixelsWith(Frame const& other) const
{
    return m_storage->av->data[0] == other.m_storage->av->data[0];
}

} // namespace framewright
