#pragma once

#include <QPainterPath>
#include <QRectF>

#include <vector>

namespace framewright {

/// One shape around rows that lie under each other: it hugs each of them, its corners are rounded
/// outwards and inwards, and rows about as wide as their neighbour are made just as wide, so that
/// there are no steps too small to be rounded. Rows that lie further apart get shapes of their own.
QPainterPath boxAround(std::vector<QRectF> rows, double cornerRadius);

} // namespace framewright
