#pragma once

#include "media/frame.h"
#include "raster/internal/frame_scaler.h"
#include "raster/internal/layer_geometry.h"
#include "raster/internal/plane_blend.h"

#include <optional>

namespace framewright {

/// Paints the pictures of layers onto a canvas: scaled, turned, converted and blended. One thread
/// at a time.
class LayerPainter {
public:
    /// `picture` is of the layer, stored as it was decoded; `naturalSize` is the size that the
    /// geometry was made for. The canvas is 4:2:0 and has even sides.
    void paint(Frame& canvas, Frame const& picture, Size naturalSize, LayerGeometry const& geometry,
               BlendWeight weight);

    static void paintBlack(Frame& canvas, PixelRect const& where, BlendWeight weight);

private:
    bool paintDirectly(Frame& canvas, Frame const& picture, Rect const& crop, Rect const& region,
                       LayerGeometry const& geometry, BlendWeight weight);
    Frame scaled(Frame const& canvas, Frame const& picture, Rect const& crop, Rect const& region,
                 LayerGeometry const& geometry);
    std::optional<Frame> mask(Frame const& picture, Rect const& crop, Rect const& region,
                              LayerGeometry const& geometry);

    FrameScaler m_scaler;
};

} // namespace framewright
