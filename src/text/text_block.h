#pragma once

#include "model/aspect_preset.h"
#include "model/style.h"

#include <string>

namespace framewright {

/// Words as they are to be drawn on a canvas.
///
/// Lengths of the style are points: 1/1080 of the canvas width. So lines break at the same words
/// whatever the size of the canvas.
struct TextBlock {
    /// What stands at (x, y): the middle of the block's upper edge, of the block, or of its lower
    /// edge. Boxes, outlines and shadows lie outside the block.
    enum class Anchor { top, center, bottom };
    enum class Edges {
        free,   ///< The block may stand partly outside the canvas.
        inside, ///< It is moved onto the canvas, box and outline too, where it fits.
    };

    std::string text;
    CaptionStyle style;
    PixelSize canvas;
    double x = 0; ///< In pixels of the canvas.
    double y = 0;
    double scale = 1; ///< Of all lengths of the style but the widest line's.
    Anchor anchor = Anchor::center;
    Edges edges = Edges::free;

    bool operator==(TextBlock const&) const = default;
};

} // namespace framewright
