#pragma once

namespace framewright {

struct Point {
    double x = 0;
    double y = 0;

    bool operator==(Point const&) const = default;
};

struct Size {
    double width = 0;
    double height = 0;

    bool isEmpty() const { return !(width > 0) || !(height > 0); }

    bool operator==(Size const&) const = default;
};

/// Origin at its top left, y down. Sides are never negative.
struct Rect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    double right() const { return x + width; }
    double bottom() const { return y + height; }
    bool isEmpty() const { return !(width > 0) || !(height > 0); }

    bool operator==(Rect const&) const = default;
};

/// Maps (x, y) to (a x + c y + tx, b x + d y + ty).
struct AffineTransform {
    double a = 1;
    double b = 0;
    double c = 0;
    double d = 1;
    double tx = 0;
    double ty = 0;

    static AffineTransform translation(double x, double y) { return {1, 0, 0, 1, x, y}; }
    static AffineTransform scaling(double x, double y) { return {x, 0, 0, y, 0, 0}; }

    Point apply(Point point) const;

    /// The smallest upright rectangle around the mapped one.
    Rect apply(Rect const& rect) const;

    /// This one first, then `next`.
    AffineTransform then(AffineTransform const& next) const;

    /// Undoes this one, whose determinant must not be 0.
    AffineTransform inverse() const;

    bool operator==(AffineTransform const&) const = default;
};

} // namespace framewright
