#pragma once

#include "text/font_registry.h"
#include "text/placed_image.h"
#include "text/text_block.h"

namespace framewright {

/// Draws the part of a text that is on the canvas; the cost is bounded by the canvas, not the text.
/// Any thread may call; equal blocks give equal images. Needs a QGuiApplication.
///
/// From bottom to top:
/// - The shadow, cast by the box if there is one, else by the letters and their outline.
/// - The box, which follows the lines with padding.
/// - The outline, `strokeWidth` wide and entirely outside the letters. Painting a stroke centred on
///   the contour over the letters would thin them, so it is filled first, at twice the width.
/// - The letters. They replace what is beneath instead of blending with it: translucent letters
///   show the box or the footage, never their own outline or shadow.
/// - Emoji, in their own colours and without an outline.
///
/// Parts are drawn as coverage masks, which the shadow's blur needs, and composited pixel by pixel
/// in floating point.
///
/// Positions are rounded to half pixels. Nothing is shrunk to fit the canvas. Invalid values in the
/// style are replaced as by `normalized`.
PlacedImage paintText(TextBlock const& block, FontRegistry const& fonts);

} // namespace framewright
