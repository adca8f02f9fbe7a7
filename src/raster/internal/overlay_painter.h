#pragma once

#include "composition/overlay.h"
#include "media/frame.h"
#include "raster/internal/layer_geometry.h"

#include <vector>

namespace framewright {

/// Paints overlays of standard range onto a canvas. One thread at a time.
///
/// Each is drawn and converted to the canvas's format once, when it comes up, blended only where
/// it is, and forgotten when it goes.
class OverlayPainter {
public:
    using Pictures = std::vector<std::shared_ptr<OverlayImage const>>;

    /// Paints all of them, the last one foremost. Those of the call before that come again are
    /// neither drawn nor converted again; others are forgotten.
    void paint(Frame& canvas, Pictures const& pictures);

    /// Forgets all of them.
    void forget() { m_kept.clear(); }

private:
    struct Converted {
        Frame picture; ///< As large as `drawn`.
        Frame mask;
        Frame chromaMask;
    };
    struct Kept {
        std::shared_ptr<OverlayImage const> picture;
        PixelRect drawn; ///< On the canvas, with even edges; empty when nothing is seen.
        std::vector<Converted> converted; ///< One, or none when nothing is seen.
    };

    static Kept kept(std::shared_ptr<OverlayImage const> const& picture, Frame const& canvas);
    static Converted converted(PlacedImage const& image, PixelRect const& drawn,
                               Frame const& canvas);

    std::vector<Kept> m_kept;
};

} // namespace framewright
