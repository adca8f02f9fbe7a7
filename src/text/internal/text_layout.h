#pragma once

#include "model/style.h"
#include "text/font_registry.h"
#include "text/internal/line_shaper.h"

#include <QPainterPath>
#include <QRectF>

#include <string>
#include <vector>

namespace framewright {

/// A line, in points, with (0, 0) at the middle of the block's upper edge.
struct TextLine {
    double baseline = 0;
    double width = 0;        ///< The advance width without spaces at the ends, centred on 0.
    double letterTop = 0;    ///< The line's part of the block: capitals plus an equal margin above
    double letterBottom = 0; ///< and below, whatever letters it has, so lines are equally high.
    QRectF ink;              ///< The bounds of what is drawn; empty for a blank line.
    std::vector<PlacedGlyphs> glyphs;

    bool isBlank() const { return glyphs.empty(); }
};

/// A text broken into lines and shaped.
struct TextLayout {
    std::vector<TextLine> lines;
    double height = 0; ///< In points.
    double unit = 1;   ///< Points per unit of glyph positions and contours.

    /// The contours of a line's letters in points, to be filled by the winding rule. Bitmap glyphs
    /// have none.
    QPainterPath contours(TextLine const& line) const;
};

/// The rest of a longer text is not drawn. About as many fit a 9:16 canvas at eight points, the
/// smallest size.
inline constexpr int maxCharacters = 40'000;

/// Lays out a text in the style's font, in lines of at most `maxWidth` points.
///
/// Lines are balanced. They break where the script allows (Unicode Standard Annex 14), words that
/// are too long between any two grapheme clusters, and always at newlines. Blank lines at either
/// end are dropped.
///
/// Shaping is always done at one em size and scaled by `unit`. Advances rounded or hinted at the
/// size being drawn would let the same text break differently on a thumbnail and in the export.
///
/// Baselines are a fixed distance apart for each font, clamped so that fonts with extreme metrics
/// still look like captions. Where the ink of two lines would touch, as with a script font's
/// descenders above accented capitals, the lower one moves down until there is a gap.
TextLayout layOut(std::string const& text, CaptionStyle const& style, double maxWidth,
                  FontRegistry const& fonts);

} // namespace framewright
