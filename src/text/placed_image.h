#pragma once

#include <cstdint>
#include <vector>

namespace framewright {

/// An image and its place on the canvas: 8-bit RGBA, premultiplied, rows without padding.
struct PlacedImage {
    int x = 0; ///< Left and upper edge in pixels of the canvas; may be outside it.
    int y = 0;
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> pixels;

    bool isEmpty() const { return width <= 0 || height <= 0; }

    bool operator==(PlacedImage const&) const = default;
};

} // namespace framewright
