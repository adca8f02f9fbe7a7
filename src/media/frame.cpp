#include "media/frame.h"

#include "media/frame_memory.h"
#include "media/pixel_format.h"

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

/// No picture needs more; larger ones are a mistake or an attack.
constexpr std::size_t maxPictureBytes = std::size_t{4} << 30;

AVFrame* owned(AVFrame* frame)
{
    return frame ? frame : throw std::bad_alloc();
}

bool isChroma(PixelLayout layout, int index)
{
    return layout.model == PixelLayout::Model::yuv && (index == 1 || index == 2);
}

/// A side of a subsampled plane: an odd one keeps its last sample.
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

/// Which of an AVFrame's pointers holds a plane.
int slot(PixelLayout layout, int index)
{
    return layout.model == PixelLayout::Model::gray && index == 1 ? 3 : index;
}

std::size_t roundedUp(std::size_t bytes)
{
    return (bytes + rowAlignment - 1) / rowAlignment * rowAlignment;
}

} // namespace

void Frame::Release::operator()(AVFrame* frame) const
{
    av_frame_free(&frame);
}

Frame::Frame(int width, int height, PixelLayout layout, ColorTags colors)
    : m_frame(owned(av_frame_alloc()))
{
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
            stride * std::size_t(rows) > maxPictureBytes)
            throw std::bad_alloc();
        m_frame->linesize[slot(layout, i)] = int(stride);
        offsets[std::size_t(i)] = bytes;
        bytes += stride * std::size_t(rows);
    }
    // Vector code may read a little past the last row.
    AVBufferRef* const memory = pictureMemory(bytes + rowAlignment);
    m_frame->buf[0] = memory;
    for (int i = 0; i < layout.planeCount(); ++i)
        m_frame->data[slot(layout, i)] = memory->data + offsets[std::size_t(i)];
    m_frame->extended_data = m_frame->data;
    m_frame->width = width;
    m_frame->height = height;
    m_frame->format = format;
    setColors(colors);
}

Frame::Frame(AVFrame* frame) : m_frame(frame)
{
    auto const format = static_cast<AVPixelFormat>(frame->format);
    auto const layout = layoutOf(format);
    if (!layout)
        throw std::invalid_argument("A Frame cannot hold this pixel format.");
    AVPixelFormat const plain = formatOf(*layout);
    bool const isRGB = layout->model == PixelLayout::Model::gbr;
    if (plain != format || (isRGB && frame->color_range == AVCOL_RANGE_UNSPECIFIED))
        frame->color_range = AVCOL_RANGE_JPEG;
    frame->format = plain;
}

Frame::Frame(Frame const& other) : m_frame(owned(av_frame_clone(other.m_frame.get()))) {}

Frame& Frame::operator=(Frame other) noexcept
{
    std::swap(m_frame, other.m_frame);
    return *this;
}

int Frame::width() const
{
    return m_frame->width;
}

int Frame::height() const
{
    return m_frame->height;
}

PixelLayout Frame::layout() const
{
    return *layoutOf(static_cast<AVPixelFormat>(m_frame->format));
}

ColorTags Frame::colors() const
{
    return colorsOf(*m_frame);
}

void Frame::setColors(ColorTags colors)
{
    framewright::setColors(*m_frame, colors);
}

Frame::Plane Frame::plane(int index) const
{
    PixelLayout const planar = layout();
    auto const [columns, rows] = planeSize(planar, width(), height(), index);
    int const place = slot(planar, index);
    return {m_frame->data[place], m_frame->linesize[place], columns, rows};
}

Frame::WritablePlane Frame::writablePlane(int index)
{
    if (!av_frame_is_writable(m_frame.get())) {
        Frame copy(width(), height(), layout(), colors());
        av_image_copy(copy.m_frame->data, copy.m_frame->linesize,
                      const_cast<std::uint8_t const**>(m_frame->data), m_frame->linesize,
                      static_cast<AVPixelFormat>(m_frame->format), width(), height());
        if (av_frame_copy_props(copy.m_frame.get(), m_frame.get()) < 0)
            throw std::bad_alloc();
        *this = std::move(copy);
    }
    Plane const shown = plane(index);
    return {const_cast<std::uint8_t*>(shown.data), shown.stride, shown.width, shown.height};
}

bool Frame::sharesPixelsWith(Frame const& other) const
{
    return m_frame->data[0] == other.m_frame->data[0];
}

} // namespace framewright
