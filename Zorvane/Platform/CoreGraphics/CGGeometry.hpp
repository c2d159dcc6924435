// Points, sizes and rectangles in double precision. Pure values and functions.
#pragma once

#include <cmath>
#include <limits>
#include <string>

namespace zorvane {

/// A position. Global display coordinates have their origin at the top left of the main display, y growing downward.
struct CGPoint {
    double x = 0;
    double y = 0;
    bool operator==(const CGPoint&) const = default;
};

/// A width and a height, in points.
struct CGSize {
    double width = 0;
    double height = 0;
    bool operator==(const CGSize&) const = default;
};

/// A rectangle of points. The null rectangle (see `null`) stands for "no intersection" and is not the empty one.
struct CGRect {
    CGPoint origin;
    CGSize size;

    static constexpr CGRect make(double x, double y, double width, double height) { return {{x, y}, {width, height}}; }
    static constexpr CGRect null() {
        constexpr double infinity = std::numeric_limits<double>::infinity();
        return {{infinity, infinity}, {0, 0}};
    }
    constexpr double maxX() const { return origin.x + size.width; }
    constexpr double maxY() const { return origin.y + size.height; }
    bool operator==(const CGRect&) const = default;
};

bool CGRectIsNull(const CGRect& rect);

/// The common area of two rectangles; the null rectangle when they don't touch. Rectangles that share only an edge
/// have an intersection of zero width or height.
CGRect CGRectIntersection(const CGRect& a, const CGRect& b);

/// Whether two rectangles have an area in common; those that only touch have none.
bool CGRectIntersectsRect(const CGRect& a, const CGRect& b);

/// The same rectangle moved by (dx, dy).
CGRect CGRectOffset(const CGRect& rect, double dx, double dy);

/// "(x, y, width, height)", for log metadata.
std::string debugDescription(const CGRect& rect);

}  // namespace zorvane
