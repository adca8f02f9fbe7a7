#pragma once

#include "model/style.h"
#include "text/font_registry.h"
#include "text/internal/font_choice.h"

#include <QFont>
#include <QGlyphRun>
#include <QRectF>

#include <vector>

namespace framewright {

/// The em size at which lines are shaped; see `layOut`. At this one the emoji font's bitmaps have
/// their stored size.
inline constexpr int emPixels = 109;

/// Glyphs of one font, in the layout's units: multiply by `TextLayout::unit` for points.
struct PlacedGlyphs {
    QGlyphRun run; ///< Its boundingRect() is not updated when positions change; use `ink`.
    QRectF ink;
    bool isColored = false; ///< Bitmap glyphs, which have no contours.

    void moveBy(QPointF const& offset);
};

/// A line as shaped by the text engine, starting at (0, 0) on the baseline.
struct ShapedLine {
    std::vector<PlacedGlyphs> glyphs;
    double width = 0;
    QRectF ink;
};

/// Shapes lines of text in a style's font and its fallbacks.
class LineShaper {
public:
    /// `text` is the whole text, of which parts will be shaped.
    LineShaper(CaptionStyle const& style, QString const& text, FontRegistry const& fonts);

    QFont const& font() const { return m_font; }

    /// The letter spacing used for a text: none for scripts whose letters are joined.
    double spacingIn(QString const& text) const;

    ShapedLine shape(QString const& text, Qt::LayoutDirection direction) const;

private:
    QFont m_font;
    FontChoice m_choice;
    double m_spacing;
};

} // namespace framewright
