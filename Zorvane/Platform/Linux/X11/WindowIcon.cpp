#include "Zorvane/Platform/Linux/X11/WindowIcon.hpp"

namespace zorvane {
namespace {

constexpr std::uint32_t longestSide = 512;

NSImage imageFrom(std::uint32_t width, std::uint32_t height, std::span<const std::uint32_t> pixels) {
    NSImage image{.width = width, .height = height};
    image.pixels.reserve(4 * pixels.size());
    for (const std::uint32_t argb : pixels) {
        for (const int shift : {16, 8, 0, 24}) {
            image.pixels.push_back(static_cast<std::uint8_t>(argb >> shift));
        }
    }
    return image;
}

}  // namespace

std::optional<NSImage> largestWindowIcon(std::span<const std::uint32_t> value) {
    std::span<const std::uint32_t> best;
    std::uint32_t bestWidth = 0;
    while (value.size() > 2) {
        const std::uint32_t width = value[0];
        const std::uint32_t height = value[1];
        const std::uint64_t area = std::uint64_t{width} * height;
        if (area == 0 || area > value.size() - 2) {
            break;  // cut off, or nonsense
        }
        if (width <= longestSide && height <= longestSide && area > best.size()) {
            best = value.subspan(2, area);
            bestWidth = width;
        }
        value = value.subspan(2 + area);
    }
    if (best.empty()) {
        return std::nullopt;
    }
    return imageFrom(bestWidth, static_cast<std::uint32_t>(best.size() / bestWidth), best);
}

}  // namespace zorvane
