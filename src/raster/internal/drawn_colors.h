#pragma once

#include "media/frame.h"

namespace framewright {

/// The same colours in as few words as drawing needs, so that what looks the same compares equal.
///
/// Untagged frames get the colours their size suggests: BT.709 from 720 rows on, else BT.601;
/// BT.2020 when they are PQ or HLG.
/// The curves of standard range (BT.709, BT.601, sRGB, 2.2, 2.8) are one: screens show them alike,
/// and converting between them would alter footage that is correct as it is. So are the
/// primaries of BT.709 and of standard definition, which are tagged wrongly as often as rightly.
ColorTags drawnColors(ColorTags colors, PixelLayout layout, int height);

} // namespace framewright
