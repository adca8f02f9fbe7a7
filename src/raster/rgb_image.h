#pragma once

#include "media/frame.h"
#include "model/aspect_preset.h"

#include <cstdint>
#include <vector>

namespace framewright {

/// An image for the screen: 8-bit red, green, blue, in rows without padding, sRGB.
struct RGBImage {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> pixels;

    std::uint8_t const* row(int y) const { return pixels.data() + std::size_t(y) * width * 3; }
};

/// The image as the bytes of a PNG file, compressed for speed rather than for size.
std::vector<std::uint8_t> pngFile(RGBImage const& image);

/// The upper left part of a frame, `size` pixels large, as the screen shows it.
RGBImage screenImage(Frame const& frame, PixelSize size);

} // namespace framewright
