#pragma once

#include "composition/composition.h"
#include "raster/internal/frame_scaler.h"
#include "raster/internal/plane_turn.h"

#include <optional>

namespace framewright {

/// Whole pixels of the canvas: [left, right) by [top, bottom).
struct PixelRect {
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;

    int width() const { return right - left; }
    int height() const { return bottom - top; }
    bool isEmpty() const { return right <= left || bottom <= top; }
    bool contains(PixelRect const& other) const
    {
        return left <= other.left && top <= other.top && right >= other.right &&
               bottom >= other.bottom;
    }

    bool operator==(PixelRect const&) const = default;
};

/// Which pixels of the canvas a layer covers, and how they are made of its picture.
struct LayerGeometry {
    PixelRect frame;   ///< The whole visible picture, its edges rounded; may exceed the canvas.
    PixelRect visible; ///< As much of it as lies on the canvas.
    PixelRect drawn;   ///< `visible` widened to even edges, so that it holds whole chroma samples.
    Turn turn;

    Rect crop;   ///< The visible part of the picture as stored, in pixels of its natural size.
    Rect region; ///< What is scaled to become `scaledWidth` by `scaledHeight`, in the same pixels.

    // The scaled picture is not turned yet. Turned, from sample `margin` of each plane's rows on,
    // it is what goes into `drawn`.
    int scaledWidth = 0;
    int scaledHeight = 0;
    int margin = 0;
    ChromaPlace chromaPlace = ChromaPlace::left; ///< Turned, it lies left, as in the canvas.
};

/// Nothing when no pixel of the layer is on the canvas.
std::optional<LayerGeometry> layerGeometry(Layer const& layer, PixelSize canvas);

} // namespace framewright
