#include "Zorvane/Platform/Linux/X11/Veil.hpp"

#include <utility>

namespace zorvane {
namespace {

/// A window that is painted in more pieces than this stays veiled until larger ones are painted.
constexpr std::size_t mostParts = 256;

void addUnlessEmpty(std::vector<PixelRect>& rects, const PixelRect& rect) {
    if (!rect.isEmpty()) {
        rects.push_back(rect);
    }
}

/// Adds what `hole` leaves of `rect`: above, below, left and right of it.
void addRest(std::vector<PixelRect>& rects, const PixelRect& rect, const PixelRect& hole) {
    addUnlessEmpty(rects, {rect.x, rect.y, rect.width, hole.y - rect.y});
    addUnlessEmpty(rects, {rect.x, hole.maxY(), rect.width, rect.maxY() - hole.maxY()});
    addUnlessEmpty(rects, {rect.x, hole.y, hole.x - rect.x, hole.height});
    addUnlessEmpty(rects, {hole.maxX(), hole.y, rect.maxX() - hole.maxX(), hole.height});
}

}  // namespace

void Veil::lay(const PixelRect& rect) {
    addUnlessEmpty(parts_, rect);
}

PixelRect Veil::extent() const {
    PixelRect extent;
    for (const PixelRect& part : parts_) {
        extent = enclosing(extent, part);
    }
    return extent;
}

void Veil::lift(const PixelRect& rect) {
    left_.clear();
    for (const PixelRect& part : parts_) {
        const PixelRect hole = intersection(part, rect);
        if (hole.isEmpty()) {
            left_.push_back(part);
        } else {
            addRest(left_, part, hole);
        }
    }
    if (left_.size() <= mostParts) {
        std::swap(parts_, left_);
    }
}

}  // namespace zorvane
