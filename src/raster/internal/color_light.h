#pragma once

#include "media/frame.h"

#include <array>

namespace framewright {

/// Red, green and blue.
using RGB = std::array<float, 3>;

/// The light a screen shows for a signal of these colours: BT.2020 primaries, linear, 1 where
/// reference white is, the white of paper and of titles.
///
/// In HDR that is 203 cd/m² as ITU-R BT.2408 puts it: 75 % of HLG on a screen of 1000 cd/m², 58 %
/// of PQ. In standard range it is full white, by the curve of ITU-R BT.1886. The signal is 0 to 1
/// and may go beyond.
RGB lightOf(RGB signal, ColorTags colors);

/// The HLG signal, in BT.2020, for such light, by ITU-R BT.2100 for a screen of 1000 cd/m². Light
/// that PQ may have and HLG has not is bent into the last quarter of the range.
RGB hlgSignal(RGB light);

/// The BT.709 signal for such light, which is HDR.
///
/// Highlights are bent half in proportion, all as the brightest of red, green and blue, which keeps
/// their colour, and half each for itself, which makes them paler the brighter they are, as on
/// film. The curve is Reinhard's (Photographic Tone Reproduction, 2002, equation 4): shadows and
/// middle tones hardly change, reference white comes to 76 % (75 % for PQ) and leaves the rest to
/// the highlights, and only the peak of the HDR signal, `peak` times reference white, is full
/// white. What BT.709 can't show is made paler until it can, at the same luminance.
RGB standardSignal(RGB light, float peak);

/// The brightest light a signal of this transfer can mean, in reference whites.
float peakLight(ColorTags colors);

} // namespace framewright
