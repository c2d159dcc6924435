#include "Zorvane/Platform/CoreGraphics/CGGeometry.hpp"

#include <fmt/format.h>

#include <algorithm>

namespace zorvane {

bool CGRectIsNull(const CGRect& rect) {
    return std::isinf(rect.origin.x) || std::isinf(rect.origin.y);
}

CGRect CGRectIntersection(const CGRect& a, const CGRect& b) {
    if (CGRectIsNull(a) || CGRectIsNull(b)) {
        return CGRect::null();
    }
    const double left = std::max(a.origin.x, b.origin.x);
    const double top = std::max(a.origin.y, b.origin.y);
    const double right = std::min(a.maxX(), b.maxX());
    const double bottom = std::min(a.maxY(), b.maxY());
    if (right < left || bottom < top) {
        return CGRect::null();
    }
    return CGRect::make(left, top, right - left, bottom - top);
}

bool CGRectIntersectsRect(const CGRect& a, const CGRect& b) {
    const CGRect common = CGRectIntersection(a, b);
    return !CGRectIsNull(common) && common.size.width > 0 && common.size.height > 0;
}

CGRect CGRectOffset(const CGRect& rect, double dx, double dy) {
    return CGRect::make(rect.origin.x + dx, rect.origin.y + dy, rect.size.width, rect.size.height);
}

std::string debugDescription(const CGRect& rect) {
    return fmt::format("({}, {}, {}, {})", rect.origin.x, rect.origin.y, rect.size.width, rect.size.height);
}

}  // namespace zorvane
