#pragma once

#include "media/frame.h"
#include "render/layer_geometry.h"
#include "render/overlay.h"

#include <vector>

namespace framewright {

/// Paints overlays of standard range onto a canvas. One thread at a time.
///
/// Each is converted to the canvas's format once and blended only where it is.
class OverlayPainter {
public:
    /// Paints all of them, the last one foremost. Those of the call before that come again are
    /// not converted again.
    void paint(Frame& canvas, std::vector<Overlay> const& overlays);

private:
    struct Converted {
        std::shared_ptr<OverlayImage const> image;
        PixelRect visible; ///< On the canvas.
        PixelRect drawn;   ///< Around it, with even edges.
        Frame picture;     ///< As large as `drawn`.
        Frame mask;
        Frame chromaMask;
    };

    static Converted converted(Overlay const& overlay, PixelRect const& visible,
                               Frame const& canvas);

    std::vector<Converted> m_converted;
};

} // namespace framewright
