#pragma once

#include "model/aspect_preset.h"
#include "model/style.h"

#include <string>

namespace framewright {

/// A text to be drawn on a canvas.
///
/// Lengths in the style are in points, 1/1080 of the canvas width, so that lines break at the same
/// words on a canvas of any size.
struct TextBlock {
    /// Which point of the block is at (x, y): the middle of its upper edge, its centre, or the
    /// middle of its lower edge. Boxes, outlines and shadows extend beyond the block.
    enum class Anchor { top, center, bottom };
    enum class Edges {
        free,   ///< The block may be partly outside the canvas.
        inside, ///< The block, its box and its outline are moved onto the canvas if they fit.
    };

    std::string text;
    CaptionStyle style;
    PixelSize canvas;
    double x = 0; ///< In pixels of the canvas.
    double y = 0;
    double scale = 1; ///< Multiplies all lengths of the style except the maximal line width.
    Anchor anchor = Anchor::center;
    Edges edges = Edges::free;

    bool operator==(TextBlock const&) const = default;
};

} // namespace framewright
