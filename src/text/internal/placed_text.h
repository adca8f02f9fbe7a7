#pragma once

#include "text/font_registry.h"
#include "text/internal/text_layout.h"
#include "text/text_block.h"

#include <QPointF>
#include <QRect>
#include <QTransform>

#include <vector>

namespace framewright {

/// How far below the text its shadow falls, in points.
double shadowDrop(CaptionStyle const& style);

/// A text laid out and positioned on its canvas. Invalid values in the block are replaced.
class PlacedText {
public:
    PlacedText(TextBlock const& block, FontRegistry const& fonts);

    /// From points to pixels of the canvas.
    QTransform transform() const { return QTransform(unit, 0, 0, unit, origin.x(), origin.y()); }

    /// The bounds of a line with its outline and box, without its shadow, in points.
    QRectF reachOf(TextLine const& line) const;

    /// The standard deviation of the shadow's blur, in pixels.
    double shadowSigma() const { return style.shadowRadius / 2 * unit; }

    /// The pixels of the canvas that the text may cover.
    QRect visible(PixelSize canvas) const;

    CaptionStyle style; ///< Normalized, with invisible parts switched off.
    double unit;        ///< Pixels per point.
    TextLayout layout;
    std::vector<QRectF> rows; ///< The box's rows, in points.
    QRectF drawn;             ///< The bounds without the shadow, in points.
    double shadowReach = 0;   ///< How far the shadow extends beyond, in points.
    QPointF origin;           ///< The position of the layout's (0, 0), in pixels.

private:
    void place(TextBlock const& block);
    void moveInside(PixelSize canvas);
};

} // namespace framewright
