// Cursors made of pixels. Pure.
#pragma once

#include <cstdint>
#include <span>

#include "Zorvane/Platform/AppKit/NSCursor.hpp"

namespace zorvane {

/// An X server's or a theme's image: rows from the top, each pixel alpha, red, green and blue from its top byte on,
/// already multiplied by alpha.
struct CursorPixels {
    std::span<const std::uint32_t> pixels;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t hotX = 0;
    std::uint32_t hotY = 0;
};

/// The image's bytes are its width, its height and its pixels, the lowest byte of each first. An image without pixels
/// is none.
NSCursor makeCursor(const CursorPixels& image);

}  // namespace zorvane
