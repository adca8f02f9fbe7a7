#pragma once

#include "text/font_registry.h"
#include "text/placed_image.h"
#include "text/text_block.h"

namespace framewright {

/// Draws a text: what of it lies on the canvas, so the cost is bounded by the canvas and not by
/// the text. Any thread may call; equal blocks give equal images. There must be a QGuiApplication.
///
/// From below: the box hugs the lines, padded. Without a box the letters cast the shadow, with one
/// the box does, outwards. The outline lies outside the letters, `strokeWidth` wide. Then the
/// letters, which are drawn in place of what is beneath them and not over it, so that letters one
/// can see through show the box or the picture and never their own outline. Emoji are drawn in
/// their own colours, without an outline.
///
/// Places are rounded to half pixels. Nothing is made smaller to fit: what is larger than the
/// canvas is cut by it. Values of the style that can't be drawn are taken as `normalized` takes
/// them.
PlacedImage paintText(TextBlock const& block, FontRegistry const& fonts);

} // namespace framewright
