#pragma once

#include "media/frame.h"

#include <optional>

extern "C" {
#include <libavutil/frame.h>
#include <libavutil/pixfmt.h>
}

namespace framewright {

/// The layout of a planar format; nothing for packed, big-endian and floating-point ones. "yuvj"
/// formats have the layout of their plain counterparts.
std::optional<PixelLayout> layoutOf(AVPixelFormat format);

/// The format of a layout, never a "yuvj" one; AV_PIX_FMT_NONE when there is none.
AVPixelFormat formatOf(PixelLayout layout);

/// The layout that loses least when converting from a format that has none itself.
PixelLayout nearestLayout(AVPixelFormat format);

ColorTags colorsOf(AVFrame const& frame);
void setColors(AVFrame& frame, ColorTags colors);

} // namespace framewright
