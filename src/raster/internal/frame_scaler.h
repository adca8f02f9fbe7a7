#pragma once

#include "composition/geometry.h"
#include "media/frame.h"

#include <array>
#include <cstddef>
#include <memory>

namespace framewright {

/// Where the chroma samples of a subsampled picture lie among the luma samples.
enum class ChromaPlace { left, center, top, bottom };

/// Memory that a picture of some format is written into.
struct FrameTarget {
    int width = 0;
    int height = 0;
    PixelLayout layout;
    ColorTags colors; ///< As drawnColors() gives them.
    ChromaPlace chromaPlace = ChromaPlace::left;
    std::array<Frame::WritablePlane, 3> planes{}; ///< In the order of a Frame's.
};

/// All of a frame, whose colours are those of drawing already.
FrameTarget wholeOf(Frame& frame, ChromaPlace chromaPlace = ChromaPlace::left);

/// Scales pictures and converts their colours. Between HDR and standard range, and from PQ to HLG,
/// a ColorCube does that; the target is 4:2:0 there, BT.709 with 8 bits or HLG with 10.
///
/// It keeps what it has worked out for the passes made last, so the next picture through the same
/// pass costs only the pixels. One thread at a time.
class FrameScaler {
public:
    FrameScaler();
    ~FrameScaler();

    /// Whether it can write into memory that lies so: else go through a Frame of your own.
    static bool canWriteTo(FrameTarget const& target);

    /// Whether footage with these tags can be drawn. Costs nothing for those that are usual.
    static bool canConvert(ColorTags const& colors);

    /// Makes the `region` of `source` the whole of `target`. Rectangles are in pixels of the
    /// source; the edges of `region` may lie between pixels and a little outside of the picture.
    /// What lies outside of `crop` is kept out of the result as far as whole rows and columns go.
    /// Throws MediaError when these colours cannot be converted.
    void scale(Frame const& source, Rect const& crop, Rect const& region,
               FrameTarget const& target);

    /// The same for the source's last plane, its alpha: 0 to 255, of a target with one plane.
    void scaleAlpha(Frame const& source, Rect const& crop, Rect const& region,
                    FrameTarget const& target);

private:
    class Impl;
    std::unique_ptr<Impl> m_impl;
};

} // namespace framewright
