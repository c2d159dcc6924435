#include "Zorvane/Platform/Linux/X11/ScreenArea.hpp"

#include <algorithm>
#include <cmath>

namespace zorvane {
namespace {

std::int32_t whole(double value) {
    constexpr double limit = 32767;  // the X protocol's coordinates have 16 bits
    return static_cast<std::int32_t>(std::clamp(value, -limit, limit));
}

PixelRect wholePixels(const CGRect& rect) {
    return {whole(std::floor(rect.origin.x)), whole(std::floor(rect.origin.y)), whole(rect.size.width),
            whole(rect.size.height)};
}

}  // namespace

PixelRect intersection(const PixelRect& a, const PixelRect& b) {
    const std::int32_t x = std::max(a.x, b.x);
    const std::int32_t y = std::max(a.y, b.y);
    const PixelRect common{x, y, std::min(a.maxX(), b.maxX()) - x, std::min(a.maxY(), b.maxY()) - y};
    return common.isEmpty() ? PixelRect{} : common;
}

PixelRect enclosing(const PixelRect& a, const PixelRect& b) {
    if (a.isEmpty() || b.isEmpty()) {
        return a.isEmpty() ? b : a;
    }
    const std::int32_t x = std::min(a.x, b.x);
    const std::int32_t y = std::min(a.y, b.y);
    return {x, y, std::max(a.maxX(), b.maxX()) - x, std::max(a.maxY(), b.maxY()) - y};
}

RowSpan RowSpan::joinedWith(const RowSpan& other) const {
    if (isEmpty() || other.isEmpty()) {
        return isEmpty() ? other : *this;
    }
    return {std::min(top, other.top), std::max(bottom, other.bottom)};
}

std::optional<ScreenArea> ScreenArea::of(const CGRect& displayBounds, const std::optional<CGRect>& sourceRect) {
    const PixelRect display = wholePixels(displayBounds);
    const PixelRect wanted = sourceRect ? wholePixels(*sourceRect).movedBy(display.x, display.y) : display;
    const PixelRect visible = intersection(wanted, display);
    if (visible.isEmpty()) {
        return std::nullopt;
    }
    return ScreenArea{.width = wanted.width,
                      .height = wanted.height,
                      .visible = visible.movedBy(-wanted.x, -wanted.y),
                      .originX = wanted.x,
                      .originY = wanted.y};
}

}  // namespace zorvane
