#pragma once

#include "composition/geometry.h"
#include "media/frame.h"

#include <array>
#include <cstddef>
#include <memory>

namespace framewright {

/// Where the chroma samples of a subsampled picture lie among the luma samples.
enum class ChromaPlace { left, center, top, bottom };

/// Memory that a frame is written into.
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

/// Scales a region of a frame and converts its colours, in one pass over the pixels.
///
/// zimg does the work, with Catmull-Rom (a cubic that stays sharp and hardly rings); on these
/// frames it took half to three quarters of the time of swscale, and its colours are exact. Three
/// things are done around it:
///
/// - Light. Going through linear light costs several times as much as the matrix alone, so it is
///   done only where transfer or primaries differ. Between HDR and standard range, and from PQ to
///   HLG, tone mapping is needed, which zimg doesn't have; there the frame is scaled as coded
///   and then a ColorCube converts it, to 4:2:0 in BT.709 with 8 bits or HLG with 10. In this order
///   only the pixels that remain after downscaling are converted.
/// - Memory. zimg wants aligned rows and whole chroma samples. Frames of odd size or another layout
///   are copied first, with the last row and column repeated.
/// - Set-up. Building a filter graph takes longer than running it once on a small frame, so the
///   graphs used last are kept: the next frame of the same layer costs only its pixels.
///
/// The 512-bit code of zimg 3.0.4 produced wrong columns at some ratios (46 to 20, 338 to 168), so
/// it is not enabled. One thread at a time.
class FrameScaler {
public:
    FrameScaler();
    ~FrameScaler();

    /// Whether it can write into memory with this alignment; if not, scale into a Frame and copy.
    static bool canWriteTo(FrameTarget const& target);

    /// Whether footage with these tags can be drawn. Costs nothing for those that are usual.
    static bool canConvert(ColorTags const& colors);

    /// Makes the `region` of `source` the whole of `target`. Rectangles are in pixels of the
    /// source; the edges of `region` may lie between pixels and a little outside of the frame.
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
