#include "Zorvane/Platform/Linux/X11/Cursor/PixelCursor.hpp"

#include <memory>
#include <utility>

namespace zorvane {
namespace {

void append(std::string& bytes, std::uint32_t number) {
    for (int shift = 0; shift < 32; shift += 8) {
        bytes.push_back(static_cast<char>(number >> shift & 0xFFU));
    }
}

}  // namespace

NSCursor makeCursor(const CursorPixels& image) {
    NSCursor cursor{.hotSpot = {static_cast<double>(image.hotX), static_cast<double>(image.hotY)},
                    .size = {static_cast<double>(image.width), static_cast<double>(image.height)}};
    if (!image.pixels.empty()) {
        std::string bytes;
        bytes.reserve((2 + image.pixels.size()) * sizeof(std::uint32_t));
        append(bytes, image.width);
        append(bytes, image.height);
        for (const std::uint32_t pixel : image.pixels) {
            append(bytes, pixel);
        }
        cursor.tiffRepresentation = std::make_shared<const std::string>(std::move(bytes));
    }
    return cursor;
}

}  // namespace zorvane
