#pragma once

#include "model/style.h"
#include "text/font_registry.h"

#include <QGlyphRun>
#include <QPainterPath>
#include <QRectF>

#include <string>
#include <vector>

namespace framewright {

/// Glyphs of one font, in the layout's units, which `TextLayout::unit` turns into points.
struct PlacedGlyphs {
    QGlyphRun run; ///< Its own bounding rectangle may be that of another place.
    QRectF ink;
    /// Whether they are pictures in colour, which have no contours.
    bool isColored = false;
};

/// One line. Lengths are in points; (0, 0) is the middle of the block's upper edge.
struct TextLine {
    double baseline = 0;
    double width = 0;        ///< Of what it says, without spaces at its ends. It is centred on 0.
    double letterTop = 0;    ///< The line's part of the block, as high for every line without
    double letterBottom = 0; ///< letters that reach out of it: capitals stand in its middle.
    QRectF ink;              ///< What is drawn; empty when it says nothing.
    std::vector<PlacedGlyphs> glyphs;

    bool isBlank() const { return glyphs.empty(); }
};

/// A text broken into lines and set in its font.
struct TextLayout {
    std::vector<TextLine> lines;
    double height = 0; ///< In points.
    double unit = 1;   ///< How many points a unit of the glyphs' places and contours is.

    /// The contours of a line's letters in points, to be filled by the winding rule. Letters that
    /// are pictures have none.
    QPainterPath contours(TextLine const& line) const;
};

/// The most characters of a text that are drawn. More don't fit any picture: at eight points, the
/// smallest size there is, a canvas of 9:16 holds about as many.
inline constexpr int maxCharacters = 40'000;

/// Sets a text in the style's font, in lines of at most `maxWidth` points.
///
/// Lines are balanced; they break where the script allows it, a word that is too long anywhere
/// between two characters. Newlines break always. Blank lines at either end are dropped.
TextLayout layOut(std::string const& text, CaptionStyle const& style, double maxWidth,
                  FontRegistry const& fonts);

} // namespace framewright
