#include "Zorvane/Internal/DefaultApplicationIcon.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

namespace zorvane {
namespace {

using Color = std::array<std::uint8_t, 3>;

constexpr std::uint32_t side = 64;
constexpr Color frame{0x4A, 0x55, 0x65};
constexpr Color body{0xF3, 0xF5, 0xF8};

struct Box {
    double left, top, right, bottom, radius;
};

/// How much of the pixel around (x, y) a box with round corners covers, from 0 to 1.
double coverage(const Box& box, double x, double y) {
    const double dx = std::max({box.left + box.radius - x, x - (box.right - box.radius), 0.0});
    const double dy = std::max({box.top + box.radius - y, y - (box.bottom - box.radius), 0.0});
    return std::clamp(box.radius - std::hypot(dx, dy) + 0.5, 0.0, 1.0);
}

void putPixel(std::uint8_t* pixel, double x, double y) {
    constexpr Box window{4, 8, 60, 56, 7};
    constexpr Box content{7, 20, 57, 53, 4};
    const double share = coverage(content, x, y);
    for (std::size_t channel = 0; channel < body.size(); ++channel) {
        pixel[channel] = static_cast<std::uint8_t>(std::lround(std::lerp(frame[channel], body[channel], share)));
    }
    pixel[3] = static_cast<std::uint8_t>(std::lround(255 * coverage(window, x, y)));
}

}  // namespace

NSImage defaultApplicationIcon() {
    NSImage image{side, side, std::vector<std::uint8_t>(std::size_t{4} * side * side)};
    for (std::uint32_t index = 0; index < side * side; ++index) {
        const std::uint32_t column = index % side;
        const std::uint32_t row = index / side;
        putPixel(&image.pixels[std::size_t{4} * index], column + 0.5, row + 0.5);
    }
    return image;
}

}  // namespace zorvane
