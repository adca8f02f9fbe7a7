#include "text/internal/text_boxes.h"

#include <algorithm>
#include <cmath>
#include <span>

namespace framewright {

namespace {

/// The distance from a corner to the Bézier control points of its rounding, relative to the radius:
/// 1 - 4/3 (√2 - 1), the usual approximation of a quarter circle.
constexpr double roundness = 1 - 0.5522847498;

double length(QPointF const& vector)
{
    return std::hypot(vector.x(), vector.y());
}

/// Whether rows belong to one shape: a narrow slit between them would look like a mistake.
bool areNeighbors(QRectF const& upper, QRectF const& lower)
{
    return lower.top() - upper.bottom() < std::min(upper.height(), lower.height()) / 3;
}

/// Aligns the edges of neighbouring rows that differ by less than `minStep`.
void alignEdges(std::span<QRectF> rows, double minStep)
{
    bool isChanged = true;
    while (isChanged) {
        isChanged = false;
        for (std::size_t n = 0; n + 1 < rows.size(); ++n) {
            QRectF& a = rows[n];
            QRectF& b = rows[n + 1];
            if (a.left() != b.left() && std::abs(a.left() - b.left()) < minStep) {
                double const left = std::min(a.left(), b.left());
                a.setLeft(left);
                b.setLeft(left);
                isChanged = true;
            }
            if (a.right() != b.right() && std::abs(a.right() - b.right()) < minStep) {
                double const right = std::max(a.right(), b.right());
                a.setRight(right);
                b.setRight(right);
                isChanged = true;
            }
        }
    }
}

/// Makes rows adjoin: where they overlap, the wider one keeps its height, and the narrower one
/// fills any slit. A row too low to be rounded then takes the width of its narrower neighbour.
void adjoin(std::span<QRectF> rows, double minHeight)
{
    for (std::size_t n = 1; n < rows.size(); ++n) {
        QRectF& upper = rows[n - 1];
        QRectF& lower = rows[n];
        if (upper.width() >= lower.width())
            lower.setTop(upper.bottom());
        else
            upper.setBottom(lower.top());
    }
    for (std::size_t n = 1; n + 1 < rows.size(); ++n) {
        if (rows[n].height() >= minHeight)
            continue;
        QRectF& neighbor = rows[n - 1].width() < rows[n + 1].width() ? rows[n - 1] : rows[n + 1];
        rows[n].setLeft(neighbor.left());
        rows[n].setRight(neighbor.right());
        rows[n].setTop(rows[n - 1].bottom());
        rows[n].setBottom(std::max(rows[n].top(), rows[n + 1].top()));
        rows[n + 1].setTop(rows[n].bottom());
    }
}

/// The corners of the union, clockwise.
std::vector<QPointF> cornersOf(std::span<QRectF const> rows)
{
    std::vector<QPointF> corners;
    auto const add = [&](QPointF const& corner) {
        if (corners.empty() || length(corner - corners.back()) > 1e-9)
            corners.push_back(corner);
    };
    for (QRectF const& row : rows) {
        add(row.topRight());
        add(row.bottomRight());
    }
    for (std::size_t n = rows.size(); n-- > 0;) {
        add(rows[n].bottomLeft());
        add(rows[n].topLeft());
    }
    // Points on straight edges would limit the radius of their neighbours.
    std::vector<QPointF> kept;
    for (std::size_t n = 0; n < corners.size(); ++n) {
        QPointF const& before = corners[(n + corners.size() - 1) % corners.size()];
        QPointF const& after = corners[(n + 1) % corners.size()];
        bool const isStraight = (before.x() == corners[n].x() && after.x() == corners[n].x()) ||
                                (before.y() == corners[n].y() && after.y() == corners[n].y());
        if (!isStraight)
            kept.push_back(corners[n]);
    }
    return kept;
}

void addRounded(std::vector<QPointF> const& corners, double radius, QPainterPath& path)
{
    for (std::size_t n = 0; n < corners.size(); ++n) {
        QPointF const corner = corners[n];
        QPointF const in = corner - corners[(n + corners.size() - 1) % corners.size()];
        QPointF const out = corners[(n + 1) % corners.size()] - corner;
        double const round = std::min({radius, length(in) / 2, length(out) / 2});
        QPointF const from = corner - in / length(in) * round;
        QPointF const to = corner + out / length(out) * round;
        if (n == 0)
            path.moveTo(from);
        else
            path.lineTo(from);
        path.cubicTo(corner + (from - corner) * roundness, corner + (to - corner) * roundness, to);
    }
    path.closeSubpath();
}

} // namespace

QPainterPath boxAround(std::vector<QRectF> rows, double cornerRadius)
{
    std::erase_if(rows, [](QRectF const& row) { return row.isEmpty(); });
    QPainterPath path;
    path.setFillRule(Qt::WindingFill);
    for (std::size_t from = 0, to = 0; from < rows.size(); from = to) {
        to = from + 1;
        while (to < rows.size() && areNeighbors(rows[to - 1], rows[to]))
            ++to;
        std::span<QRectF> const group(rows.data() + from, to - from);
        double const lineHeight = group.front().height();
        alignEdges(group, std::max(1.2 * cornerRadius, 0.15 * lineHeight));
        adjoin(group, cornerRadius);
        addRounded(cornersOf(group), cornerRadius, path);
    }
    return path;
}

} // namespace framewright
