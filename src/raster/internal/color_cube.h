#pragma once

#include "media/frame.h"
#include "raster/internal/frame_scaler.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace framewright {

/// Converts colours between dynamic ranges with a table: a cube with the axes luma, u and v.
///
/// The problem. Converting HDR correctly goes from the coded signal to light, through a change of
/// primaries and a tone curve, and back (color_light.h; ITU-R BT.2100, BT.2408, BT.1886 and
/// Reinhard's operator). That takes several powers for every pixel, far too slow for
/// video.
///
/// The method. The conversion depends on nothing but the colour, so it is computed once per grid
/// point and interpolated, as 3-D LUTs of grading software are. The axes are those of the coded
/// signal rather than RGB, so frames stay 4:2:0 and need no conversion before the look-up. They are
/// not divided evenly: chroma has 65 × 65 points, which are interpolated bilinearly, but luma has
/// an entry for every 10-bit code (computed at every eighth). The curves bend most along luma, and
/// the eye sees banding in greys first; this way greys are exact up to rounding. Most other colours
/// are within one 8-bit code of the exact result, those at the edge of BT.709, where the gamut
/// mapping has a kink, within a few. Output chroma changes slowly with luma, so it is stored for
/// every eighth luma only, and looked up at the mean of the four luma samples that share it.
///
/// The cost is a few nanoseconds per pixel whatever the curves are. A cube takes about 11 MB and a
/// tenth of a second to compute; it is made when it is first needed. It is immutable, so any thread
/// may use it.
class ColorCube {
public:
    /// The colours of its input, which is 4:2:0 with 10 bits.
    static ColorTags inputColors(ColorTags from);

    /// The conversion between these colours, as drawnColors() gives them; null when no
    /// cube is needed, within standard range, or the colours are unknown. Computed on first use and
    /// then kept.
    static std::shared_ptr<ColorCube const> between(ColorTags from, ColorTags to);

    /// To BT.709 with 8 bits or to HLG with 10.
    ColorCube(ColorTags from, ColorTags to);

    /// Converts a frame in the input's colours into one of the same size, 4:2:0 with `outputDepth`
    /// bits. With 10 bits it may convert in place.
    void convert(Frame const& picture, FrameTarget const& target) const;

    int outputDepth() const { return m_outputDepth; }

private:
    struct Chroma {
        std::int16_t u;
        std::int16_t v;
    };

    template <typename Sample>
    void convertRows(Frame const& picture, FrameTarget const& target) const;

    int m_outputDepth;
    std::vector<std::int16_t> m_luma; ///< By v, then u, then each luma.
    std::vector<Chroma> m_chroma;     ///< By v, then u, then each eighth luma.
};

} // namespace framewright
