#include "Zorvane/Internal/CGInterop/DisplayContaining.hpp"

namespace zorvane {

double intersectionPercentage(const CGRect& frame, const CGRect& rect) {
    if (!CGRectIntersectsRect(frame, rect)) {
        return 0;
    }
    const CGSize common = CGRectIntersection(frame, rect).size;
    return common.width * common.height / (rect.size.width * rect.size.height);
}

}  // namespace zorvane
