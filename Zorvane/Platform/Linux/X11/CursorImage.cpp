#include "Zorvane/Platform/Linux/X11/CursorImage.hpp"

#include <algorithm>
#include <cstring>

namespace zorvane {
namespace {

/// `over` laid on a channel that lies at `shift` and has the range 0 to `maximum`; `over` and `alpha` go to 255.
std::uint32_t blendChannel(std::uint32_t under, std::uint32_t shift, std::uint32_t maximum, std::uint32_t over,
                           std::uint32_t alpha) {
    const std::uint32_t old = under >> shift & maximum;
    const std::uint32_t blended = (over * maximum + old * (255 - alpha) + 127) / 255;
    return std::min(blended, maximum) << shift;
}

std::uint32_t blend(std::uint32_t under, std::uint32_t over, CVPixelFormat format) {
    const std::uint32_t alpha = over >> 24;
    const std::uint32_t red = over >> 16 & 0xFF;
    const std::uint32_t green = over >> 8 & 0xFF;
    const std::uint32_t blue = over & 0xFF;
    if (format == CVPixelFormat::l10r) {
        return blendChannel(under, 20, 1023, red, alpha) | blendChannel(under, 10, 1023, green, alpha) |
               blendChannel(under, 0, 1023, blue, alpha);
    }
    return blendChannel(under, 16, 255, red, alpha) | blendChannel(under, 8, 255, green, alpha) |
           blendChannel(under, 0, 255, blue, alpha);
}

}  // namespace

void drawCursor(const CursorImage& cursor, std::int32_t x, std::int32_t y, const PixelRect& clip,
                CVPixelBuffer& picture) {
    const PixelRect touched = intersection({x, y, cursor.width, cursor.height}, clip);
    for (std::int32_t row = touched.y; row < touched.maxY(); ++row) {
        const auto from = cursor.pixels.subspan(static_cast<std::size_t>((row - y) * cursor.width + touched.x - x));
        std::byte* to = picture.mutableBytes() + static_cast<std::size_t>(row) * picture.layout().bytesPerRow +
                        static_cast<std::size_t>(touched.x) * sizeof(std::uint32_t);
        for (std::int32_t column = 0; column < touched.width; ++column, to += sizeof(std::uint32_t)) {
            const std::uint32_t over = from[static_cast<std::size_t>(column)];
            if (over == 0) {
                continue;  // nothing to see
            }
            std::uint32_t pixel;
            std::memcpy(&pixel, to, sizeof pixel);
            pixel = blend(pixel, over, picture.layout().format);
            std::memcpy(to, &pixel, sizeof pixel);
        }
    }
}

}  // namespace zorvane
