#pragma once

#include <QPainterPath>
#include <QRectF>

#include <vector>

namespace framewright {

/// The outline of a text's box: the union of its rows, from top to bottom, with convex and concave
/// corners rounded. Rows of nearly the same width are made equal, since steps smaller than the
/// radius could not be rounded. Rows with a gap between them get separate shapes.
QPainterPath boxAround(std::vector<QRectF> rows, double cornerRadius);

} // namespace framewright
