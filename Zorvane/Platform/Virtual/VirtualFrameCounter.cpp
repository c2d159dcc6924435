#include "Zorvane/Platform/Virtual/VirtualFrameCounter.hpp"

#include <cstring>

namespace zorvane {
namespace {

constexpr std::int32_t counterBits = 32;
constexpr std::int32_t cellSize = VirtualCounterCell::size;

/// The middle pixel of a counter's column or line.
constexpr std::size_t middle(std::int32_t cell) {
    return static_cast<std::size_t>(cell) * cellSize + cellSize / 2;
}

/// Whether the middle of a counter cell is bright: by its luma, or else by its green.
bool isBright(const std::byte* pixels, const CVPixelLayout& layout, std::int32_t column, std::int32_t line) {
    const std::byte* row = pixels + middle(line) * layout.bytesPerRow;
    if (layout.isBiPlanar()) {
        return std::to_integer<int>(row[middle(column)]) > 127;
    }
    std::uint32_t pixel = 0;
    std::memcpy(&pixel, row + middle(column) * sizeof(pixel), sizeof(pixel));
    const bool isBGRA = layout.format == CVPixelFormat::bgra;
    const std::uint32_t green = isBGRA ? (pixel >> 8) & 0xFF : (pixel >> 10) & 0x3FF;
    return green > (isBGRA ? 127u : 511u);
}

}  // namespace

// The second line of cells is the first one inverted, by which a reader knows a counter from any other picture.
void forEachCounterCell(std::uint32_t number, const std::function<void(const VirtualCounterCell& cell)>& draw) {
    for (std::int32_t bit = 0; bit < counterBits; ++bit) {
        const bool isSet = (number >> (counterBits - 1 - bit) & 1u) != 0;
        draw({.x = bit * cellSize, .y = 0, .isWhite = isSet});
        draw({.x = bit * cellSize, .y = cellSize, .isWhite = !isSet});
    }
}

std::optional<std::uint32_t> readFrameCounter(const std::byte* pixels, const CVPixelLayout& layout) {
    if (layout.width < counterBits * cellSize || layout.height < 2 * cellSize) {
        return std::nullopt;
    }
    std::uint32_t number = 0;
    for (std::int32_t bit = 0; bit < counterBits; ++bit) {
        const bool isSet = isBright(pixels, layout, bit, 0);
        if (isBright(pixels, layout, bit, 1) == isSet) {
            return std::nullopt;
        }
        number = number << 1 | (isSet ? 1u : 0u);
    }
    return number;
}

}  // namespace zorvane
