#pragma once

#include "media/frame.h"
#include "raster/internal/frame_scaler.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace framewright {

/// A conversion of colours through light, worked out beforehand for a grid of them: so it costs
/// the same whatever the curves are, some nanoseconds for a pixel.
///
/// It is exact for greys, but for rounding; other colours are interpolated between 65 × 65 places
/// of chroma, most to less than a code of 8 bits, those at the edge of BT.709 to a few. Never
/// changed once it is made; any thread may use it.
class ColorCube {
public:
    /// What such a cube takes: 4:2:0 with 10 bits, in these colours.
    static ColorTags inputColors(ColorTags from);

    /// The conversion between these colours, as drawnColors() gives them; null when it is none for
    /// a cube: standard range stays standard range, or neither is known here. Made when it is asked
    /// for the first time, which takes a tenth of a second, and kept from then on.
    static std::shared_ptr<ColorCube const> between(ColorTags from, ColorTags to);

    /// To BT.709 with 8 bits or to HLG with 10.
    ColorCube(ColorTags from, ColorTags to);

    /// Converts a picture of the input's colours into one of the same size, in 4:2:0 with as many
    /// bits as the cube gives. They may be the same memory when these are 10.
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
