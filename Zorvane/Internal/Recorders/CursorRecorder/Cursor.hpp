// A cursor's lasting identity.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "Zorvane/Platform/AppKit/NSCursor.hpp"
#include "Zorvane/Platform/CoreGraphics/CGGeometry.hpp"
#include "Zorvane/ZVInputEvent.hpp"

namespace zorvane {

struct Cursor {
    /// What can be compared without a look at the image.
    struct Shape {
        CGPoint hotspot;
        CGSize size;

        bool operator==(const Shape&) const = default;

        /// That of no cursor.
        static const Shape invalid;

        static Shape of(const NSCursor& cursor) { return {cursor.hotSpot, cursor.size}; }
    };

    struct ShapeHash {
        std::size_t operator()(const Shape& hashed) const noexcept;
    };

    /// A cursor that isn't one of the desktop's: its id is "custom-" and the SHA-1 of its image.
    Cursor(Shape shape, std::string tiffRepresentation);

    /// The cursors of the desktop's theme, in the order of their types; one that the theme lacks is left out. May read
    /// files.
    static std::vector<Cursor> allSystemCursors();

    std::string id;  ///< the type's name, or as above
    ZVCursorType type = ZVCursorType::custom;
    Shape shape;
    std::string tiffRepresentation;  ///< bytes

    bool operator==(const Cursor&) const = default;

  private:
    Cursor(ZVCursorType systemType, Shape shape, std::string tiffRepresentation);
};

}  // namespace zorvane
