// The cursor on the screen, and the cursors that the desktop's theme has.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "Zorvane/Platform/CoreGraphics/CGGeometry.hpp"
#include "Zorvane/ZVInputEvent.hpp"

namespace zorvane {

/// A plain value; copies share the image.
struct NSCursor {
    CGPoint hotSpot;  ///< points, from the image's top left
    CGSize size;      ///< points
    /// The image's bytes: the same for the same image, in whatever form the platform has them. Null or empty when it
    /// has none.
    std::shared_ptr<const std::string> tiffRepresentation;
};

/// Any thread.
class NSCursors {
  public:
    virtual ~NSCursors() = default;

    /// What the screen shows now, whichever program set it. Cheap as long as it stays the same. Nothing when the window
    /// server can't be asked.
    virtual std::optional<NSCursor> currentSystemCursor() = 0;

    /// The theme's cursor of a type; nothing for `custom` and for one that the theme lacks. May read files.
    virtual std::optional<NSCursor> systemCursor(ZVCursorType type) = 0;
};

}  // namespace zorvane
