// Draws a cursor into a picture. Pure.
#pragma once

#include <cstdint>
#include <span>

#include "Zorvane/Platform/CoreMedia/CVPixelBuffer.hpp"
#include "Zorvane/Platform/Linux/X11/ScreenArea.hpp"

namespace zorvane {

/// A cursor's pixels, row by row: alpha in the top byte, then red, green and blue, already multiplied by alpha.
struct CursorImage {
    std::span<const std::uint32_t> pixels;
    std::int32_t width = 0;
    std::int32_t height = 0;
};

/// Lays `cursor` over `picture`, its top left corner at (x, y) in picture coordinates; only pixels inside `clip` are
/// touched, which lies inside the picture.
void drawCursor(const CursorImage& cursor, std::int32_t x, std::int32_t y, const PixelRect& clip,
                CVPixelBuffer& picture);

}  // namespace zorvane
