// What area of the screen a stream shows. Pure.
#pragma once

#include <cstdint>
#include <optional>

#include "Zorvane/Platform/CoreGraphics/CGGeometry.hpp"

namespace zorvane {

/// A rectangle of whole pixels.
struct PixelRect {
    std::int32_t x = 0;
    std::int32_t y = 0;
    std::int32_t width = 0;
    std::int32_t height = 0;

    std::int32_t maxX() const { return x + width; }
    std::int32_t maxY() const { return y + height; }
    bool isEmpty() const { return width <= 0 || height <= 0; }
    bool contains(const PixelRect& other) const {
        return other.x >= x && other.y >= y && other.maxX() <= maxX() && other.maxY() <= maxY();
    }
    PixelRect movedBy(std::int32_t dx, std::int32_t dy) const { return {x + dx, y + dy, width, height}; }
    bool operator==(const PixelRect&) const = default;
};

/// The common area; empty when there is none.
PixelRect intersection(const PixelRect& a, const PixelRect& b);
/// The smallest rectangle that holds both; an empty one adds nothing.
PixelRect enclosing(const PixelRect& a, const PixelRect& b);

/// Some rows of a picture, from `top` up to but not including `bottom`. Empty when `top` isn't above `bottom`.
struct RowSpan {
    std::int32_t top = 0;
    std::int32_t bottom = 0;

    bool isEmpty() const { return top >= bottom; }
    std::int32_t count() const { return isEmpty() ? 0 : bottom - top; }
    /// The smallest span that holds both.
    RowSpan joinedWith(const RowSpan& other) const;
    bool operator==(const RowSpan&) const = default;
};

/// Where the pixels of a picture come from. What the picture holds beyond the display's edge is black.
struct ScreenArea {
    std::int32_t width = 0;  ///< of the picture
    std::int32_t height = 0;
    PixelRect visible;         ///< what of the picture lies on the display, in picture coordinates
    std::int32_t originX = 0;  ///< root window coordinates of the picture's top left corner
    std::int32_t originY = 0;

    /// The whole display, or `sourceRect`: points relative to the display, of which whole pixels count: the origin is
    /// rounded down, and fractions of the size fall away. Nothing if no pixel of the display is in it.
    static std::optional<ScreenArea> of(const CGRect& displayBounds, const std::optional<CGRect>& sourceRect);

    /// What a rectangle of the root window covers of the picture; empty if it lies elsewhere.
    PixelRect fromRoot(const PixelRect& rect) const { return intersection(rect.movedBy(-originX, -originY), visible); }
};

}  // namespace zorvane
