#pragma once

#include <cstdint>
#include <vector>

namespace framewright {

/// A drawn picture and where it goes: 8-bit RGBA, premultiplied, rows without padding.
struct PlacedImage {
    int x = 0; ///< Its left and upper edge, in pixels of the canvas; may lie outside it.
    int y = 0;
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> pixels;

    bool isEmpty() const { return width <= 0 || height <= 0; }

    bool operator==(PlacedImage const&) const = default;
};

} // namespace framewright
