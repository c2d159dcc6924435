#include "Zorvane/Platform/Virtual/VirtualCamera.hpp"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "Zorvane/Platform/Virtual/VirtualFrameCounter.hpp"
#include "Zorvane/Platform/Virtual/VirtualScreen.hpp"

namespace zorvane {
namespace {

// Bytes of video range.
constexpr int black = 16;
constexpr int wall = 60;
constexpr int bar = 150;
constexpr int white = 235;
constexpr int barCb = 90;
constexpr int barCr = 170;
constexpr int noColor = 128;

constexpr std::int32_t barWidth = 32;
constexpr std::uint32_t barMillisecondsPerStep = 4;

/// What lies outside is cut off.
void fillLuma(CVPixelBuffer& picture, const VirtualPixelRect& rect, int value) {
    const CVPixelLayout& layout = picture.layout();
    const std::int32_t right = std::min(rect.x + rect.width, layout.width);
    const std::int32_t bottom = std::min(rect.y + rect.height, layout.height);
    for (std::int32_t y = rect.y; y < bottom && rect.x < right; ++y) {
        std::byte* row = picture.mutableBytes() + static_cast<std::size_t>(y) * layout.bytesPerRow;
        std::memset(row + rect.x, value, static_cast<std::size_t>(right - rect.x));
    }
}

void fillChroma(CVPixelBuffer& picture, const VirtualPixelRect& rect) {
    const CVPixelLayout& layout = picture.layout();
    std::byte* plane = picture.mutableBytes() + layout.chromaOffset();
    std::memset(plane, noColor, layout.byteSize() - layout.chromaOffset());
    const std::int32_t right = std::min(rect.x + rect.width, layout.width);
    for (std::int32_t y = rect.y / 2; y < (rect.y + rect.height) / 2; ++y) {
        std::byte* row = plane + static_cast<std::size_t>(y) * layout.bytesPerRow;
        for (std::int32_t x = rect.x / 2 * 2; x + 1 < right; x += 2) {
            row[x] = std::byte(barCb);
            row[x + 1] = std::byte(barCr);
        }
    }
}

}  // namespace

// The pictures lie on a grid that begins with the desktop, so that all sessions have the same.
double VirtualCamera::pictureAfter(double time) const {
    return (std::floor(time * trueRate() + 0.5) + 1) / trueRate();
}

std::uint32_t VirtualCamera::shownMilliseconds(double time) {
    return static_cast<std::uint32_t>(std::llround(time * 1000));
}

void VirtualCamera::draw(double time, bool isFlash, CVPixelBuffer& picture) {
    const CVPixelLayout& layout = picture.layout();
    const std::uint32_t milliseconds = shownMilliseconds(time);
    const std::uint32_t place = milliseconds / barMillisecondsPerStep % static_cast<std::uint32_t>(layout.width);
    const VirtualPixelRect barRect{static_cast<std::int32_t>(place), layout.height / 4, barWidth, layout.height / 2};
    fillLuma(picture, {0, 0, layout.width, layout.height}, isFlash ? white : wall);
    if (!isFlash) {
        fillLuma(picture, barRect, bar);
    }
    fillChroma(picture, isFlash ? VirtualPixelRect{} : barRect);
    forEachCounterCell(milliseconds, [&picture](const VirtualCounterCell& cell) {
        fillLuma(picture, {cell.x, cell.y, VirtualCounterCell::size, VirtualCounterCell::size},
                 cell.isWhite ? white : black);
    });
}

}  // namespace zorvane
