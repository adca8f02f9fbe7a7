#include "media/internal/planar_converter.h"

#include "media/internal/frame_memory.h"
#include "media/internal/frame_storage.h"
#include "media/internal/pixel_format.h"

#include <algorithm>
#include <cstdint>

extern "C" {
#include <libavutil/cpu.h>
#include <libavutil/imgutils.h>
}

namespace framewright {

namespace {

constexpr int unspecified = 2;
constexpr int bt709 = 1;
constexpr int bt601 = 6;
constexpr int bt470bg = 5;
constexpr int bt2020 = 9;

bool isUnspecified(int tag)
{
    return tag == unspecified || tag == 3; // 3 is reserved.
}

/// SIMD code downstream loads aligned vectors from the start of each row.
bool isAligned(AVFrame const& frame, int planes)
{
    auto const alignment = std::uintptr_t(av_cpu_max_align());
    for (int i = 0; i < planes; ++i) {
        if (reinterpret_cast<std::uintptr_t>(frame.data[i]) % alignment != 0 ||
            frame.linesize[i] <= 0 || std::uintptr_t(frame.linesize[i]) % alignment != 0)
            return false;
    }
    return true;
}

} // namespace

ColorTags guessedColors(ColorTags stored, PixelLayout::Model model, int width, int height)
{
    ColorTags colors = stored;
    if (model != PixelLayout::Model::yuv)
        colors.chromaIsCentered = false;
    if (model == PixelLayout::Model::gbr) {
        colors.matrix = 0;
        colors.primaries = isUnspecified(stored.primaries) ? bt709 : stored.primaries;
        colors.transfer = isUnspecified(stored.transfer) ? bt709 : stored.transfer;
        return colors;
    }
    bool const isHD = std::min(width, height) >= 720 || std::max(width, height) >= 1280;
    if (isUnspecified(stored.matrix) || stored.matrix == 0)
        colors.matrix = stored.primaries == bt2020 ? bt2020 : isHD ? bt709 : bt601;
    if (isUnspecified(stored.primaries)) {
        bool const isLikeJpeg = colors.matrix == bt470bg && stored.isFullRange;
        bool const isNamedByMatrix = colors.matrix == bt709 || colors.matrix == bt470bg ||
                                     colors.matrix == bt601 || colors.matrix == bt2020;
        colors.primaries = isLikeJpeg || !isNamedByMatrix ? bt709 : colors.matrix;
    }
    if (isUnspecified(stored.transfer))
        colors.transfer = colors.primaries == bt601 ? bt601 : bt709;
    return colors;
}

Frame PlanarConverter::frameOf(AVFrame const& decoded)
{
    auto const layout = layoutOf(static_cast<AVPixelFormat>(decoded.format));
    auto const named = [](Frame frame) {
        frame.setColors(
            guessedColors(frame.colors(), frame.layout().model, frame.width(), frame.height()));
        return frame;
    };
    if (!layout)
        return named(converted(decoded));
    if (isAligned(decoded, layout->planeCount()))
        return named(framewright::frameOf(made<FrameHandle>(av_frame_clone(&decoded))));

    Frame copy(decoded.width, decoded.height, *layout, colorsOf(decoded));
    for (int i = 0; i < layout->planeCount(); ++i) {
        auto const plane = copy.writablePlane(i);
        av_image_copy_plane(plane.data, int(plane.stride), decoded.data[i], decoded.linesize[i],
                            plane.width * layout->bytesPerSample(), plane.height);
    }
    return named(std::move(copy));
}

Frame PlanarConverter::converted(AVFrame const& decoded)
{
    auto const format = static_cast<AVPixelFormat>(decoded.format);
    PixelLayout const layout = nearestLayout(format);
    Frame frame(decoded.width, decoded.height, layout, colorsOf(decoded));
    m_scaler.reset(sws_getCachedContext(m_scaler.release(), decoded.width, decoded.height, format,
                                        decoded.width, decoded.height, formatOf(layout), SWS_POINT,
                                        nullptr, nullptr, nullptr));
    if (!m_scaler)
        throw std::bad_alloc();
    std::uint8_t* planes[4] = {};
    int strides[4] = {};
    for (int i = 0; i < layout.planeCount(); ++i) {
        auto const plane = frame.writablePlane(i);
        int const place = layout.model == PixelLayout::Model::gray && i == 1 ? 3 : i;
        planes[place] = plane.data;
        strides[place] = int(plane.stride);
    }
    sws_scale(m_scaler.get(), decoded.data, decoded.linesize, 0, decoded.height, planes, strides);
    if (layout.model == PixelLayout::Model::gbr) {
        ColorTags colors = frame.colors();
        colors.isFullRange = decoded.color_range != AVCOL_RANGE_MPEG;
        frame.setColors(colors);
    }
    return frame;
}

} // namespace framewright
