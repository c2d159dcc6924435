#include "Zorvane/Internal/Recorders/CursorRecorder/Cursor.hpp"

#include <fmt/format.h>

#include <functional>
#include <utility>

#include "Zorvane/Platform/CryptoKit/InsecureSHA1.hpp"
#include "Zorvane/Platform/Platform.hpp"

namespace zorvane {
namespace {

std::string customID(const std::string& tiffRepresentation) {
    std::string id = "custom-";
    for (const std::uint8_t byte : insecureSHA1(tiffRepresentation)) {
        id += fmt::format("{:02x}", byte);
    }
    return id;
}

}  // namespace

const Cursor::Shape Cursor::Shape::invalid{.hotspot = {-1, -1}, .size = {-1, -1}};

/// The standard library hashes zero and negative zero, which are equal, alike.
std::size_t Cursor::ShapeHash::operator()(const Shape& hashed) const noexcept {
    std::size_t all = 0;
    for (const double number : {hashed.hotspot.x, hashed.hotspot.y, hashed.size.width, hashed.size.height}) {
        all = all * 31 + std::hash<double>()(number);
    }
    return all;
}

Cursor::Cursor(Shape theShape, std::string theTIFFRepresentation)
    : id(customID(theTIFFRepresentation)), shape(theShape), tiffRepresentation(std::move(theTIFFRepresentation)) {}

Cursor::Cursor(ZVCursorType systemType, Shape theShape, std::string theTIFFRepresentation)
    : id(rawValue(systemType)),
      type(systemType),
      shape(theShape),
      tiffRepresentation(std::move(theTIFFRepresentation)) {}

std::vector<Cursor> Cursor::allSystemCursors() {
    const auto platform = Platform::current();
    std::vector<Cursor> all;
    for (auto number = std::uint8_t{1}; number <= static_cast<std::uint8_t>(ZVCursorType::contextualMenu); ++number) {
        const auto type = static_cast<ZVCursorType>(number);
        const auto cursor = platform->cursors->systemCursor(type);
        if (cursor && cursor->tiffRepresentation && !cursor->tiffRepresentation->empty()) {
            all.push_back(Cursor(type, Shape::of(*cursor), *cursor->tiffRepresentation));
        }
    }
    return all;
}

}  // namespace zorvane
