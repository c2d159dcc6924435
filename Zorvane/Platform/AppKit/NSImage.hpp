// A picture for a user interface.
#pragma once

#include <cstdint>
#include <vector>

namespace zorvane {

/// A plain value. `pixels` holds `width * height` pixels from the top left, row by row without padding, four bytes
/// each: red, green, blue, alpha, not premultiplied, sRGB.
struct NSImage {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::vector<std::uint8_t> pixels;

    bool operator==(const NSImage&) const = default;
};

}  // namespace zorvane
