#include "text/internal/placed_text.h"

#include "text/internal/soft_blur.h"

#include <algorithm>
#include <cmath>

namespace framewright {

namespace {

constexpr double pointsAcross = 1080; ///< The width of any canvas in points.
constexpr double edgeFraction = 0.03; ///< The margin at the canvas's edges, relative to its width.
constexpr double maxScale = 50, minScale = 0.01;
constexpr double farAway = 1e6; ///< In pixels; fractions get lost beyond.

double finite(double value, double fallback, double least, double most)
{
    return std::isfinite(value) ? std::clamp(value, least, most) : fallback;
}

/// The style, normalized and with invisible parts switched off.
CaptionStyle drawnStyle(CaptionStyle const& style)
{
    CaptionStyle drawn = normalized(style).style;
    drawn.backgroundEnabled = drawn.backgroundEnabled && drawn.backgroundColor.alpha > 0;
    drawn.outlineEnabled =
        drawn.outlineEnabled && drawn.strokeColor.alpha > 0 && drawn.strokeWidth > 0;
    drawn.shadowEnabled = drawn.shadowEnabled && drawn.shadowOpacity > 0;
    return drawn;
}

/// The maximal line width, leaving room for box and outline on the canvas if possible.
double widestLine(CaptionStyle const& style, double scale)
{
    double const asked = style.maxWidthFraction * pointsAcross / scale;
    double const around = std::max(style.backgroundEnabled ? style.padding : 0,
                                   style.outlineEnabled ? style.strokeWidth : 0);
    return std::min(asked, std::max(pointsAcross / scale - 2.0 * around, asked / 2));
}

QRectF boxOf(TextLine const& line, double padding)
{
    double const half = line.width / 2;
    double const left = std::min(-half, line.ink.left()), right = std::max(half, line.ink.right());
    // Accents on capitals may extend into the padding.
    double const reach = padding / 2;
    double const top = std::min(line.letterTop, line.ink.top() + reach);
    double const bottom = std::max(line.letterBottom, line.ink.bottom() - reach);
    return QRectF(QPointF(left, top), QPointF(right, bottom))
        .adjusted(-padding, -padding, padding, padding);
}

} // namespace

double shadowDrop(CaptionStyle const& style)
{
    return 2 + style.shadowRadius / 4;
}

PlacedText::PlacedText(TextBlock const& block, FontRegistry const& fonts)
    : style(drawnStyle(block.style)),
      unit(block.canvas.width / pointsAcross * finite(block.scale, 1, minScale, maxScale)),
      layout(layOut(block.text, style,
                    widestLine(style, finite(block.scale, 1, minScale, maxScale)), fonts))
{
    for (TextLine const& line : layout.lines) {
        if (line.isBlank())
            continue;
        drawn |= reachOf(line);
        if (style.backgroundEnabled)
            rows.push_back(boxOf(line, style.padding));
    }
    place(block);
    double const blurred = shadowSigma() > 0 ? blurReach(shadowSigma()) / unit : 0;
    shadowReach = style.shadowEnabled ? blurred + shadowDrop(style) : 0;
}

QRectF PlacedText::reachOf(TextLine const& line) const
{
    double const outline = style.outlineEnabled ? style.strokeWidth : 0;
    QRectF const reach = line.ink.adjusted(-outline, -outline, outline, outline);
    return style.backgroundEnabled ? reach | boxOf(line, style.padding) : reach;
}

QRect PlacedText::visible(PixelSize canvas) const
{
    if (drawn.isEmpty())
        return {};
    QRectF const all =
        transform().mapRect(drawn.adjusted(-shadowReach, -shadowReach, shadowReach, shadowReach));
    return all.adjusted(-1, -1, 1, 1)
        .intersected(QRectF(0, 0, canvas.width, canvas.height))
        .toAlignedRect();
}

void PlacedText::place(TextBlock const& block)
{
    double const x = finite(block.x, block.canvas.width / 2.0, -farAway, farAway);
    double const y = finite(block.y, block.canvas.height / 2.0, -farAway, farAway);
    double const height = layout.height * unit;
    double const above = block.anchor == TextBlock::Anchor::top      ? 0
                         : block.anchor == TextBlock::Anchor::center ? height / 2
                                                                     : height;
    origin = {x, y - above};
    if (block.edges == TextBlock::Edges::inside)
        moveInside(block.canvas);
    origin = {std::round(origin.x() * 2) / 2, std::round(origin.y() * 2) / 2};
}

void PlacedText::moveInside(PixelSize canvas)
{
    double const free = edgeFraction * canvas.width;
    QRectF const there = transform().mapRect(drawn);
    if (there.height() > canvas.height - 2 * free)
        origin.ry() += canvas.height / 2.0 - there.center().y();
    else
        origin.ry() += std::max(0.0, free - there.top()) -
                       std::max(0.0, there.bottom() - (canvas.height - free));
}

} // namespace framewright
