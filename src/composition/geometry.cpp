#include "composition/geometry.h"

#include <algorithm>

namespace framewright {

Point AffineTransform::apply(Point point) const
{
    return {a * point.x + c * point.y + tx, b * point.x + d * point.y + ty};
}

Rect AffineTransform::apply(Rect const& rect) const
{
    Point const corners[] = {
        apply(Point{rect.x, rect.y}),
        apply(Point{rect.right(), rect.y}),
        apply(Point{rect.x, rect.bottom()}),
        apply(Point{rect.right(), rect.bottom()}),
    };
    auto const [left, right] = std::ranges::minmax(corners, {}, &Point::x);
    auto const [top, bottom] = std::ranges::minmax(corners, {}, &Point::y);
    return {left.x, top.y, right.x - left.x, bottom.y - top.y};
}

AffineTransform AffineTransform::then(AffineTransform const& next) const
{
    return {
        next.a * a + next.c * b,
        next.b * a + next.d * b,
        next.a * c + next.c * d,
        next.b * c + next.d * d,
        next.a * tx + next.c * ty + next.tx,
        next.b * tx + next.d * ty + next.ty,
    };
}

AffineTransform AffineTransform::inverse() const
{
    double const determinant = a * d - b * c;
    return {
        d / determinant,
        -b / determinant,
        -c / determinant,
        a / determinant,
        (c * ty - d * tx) / determinant,
        (b * tx - a * ty) / determinant,
    };
}

} // namespace framewright
