// The cursors of the X server's own font.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <tuple>

#include "Zorvane/Platform/Linux/X11/Cursor/PixelCursor.hpp"
#include "Zorvane/ZVInputEvent.hpp"

namespace zorvane {

class XConnection;

/// Terminals and other programs of old show glyphs of the font "cursor", in any two colours and under no name.
/// Immutable.
class FontCursors {
  public:
    /// Draws the glyphs, in two round trips for each. Knows none if the server lacks the font.
    explicit FontCursors(const XConnection& connection);

    /// The type of a cursor that has a glyph's shape.
    std::optional<ZVCursorType> typeOf(const CursorPixels& cursor) const;

  private:
    /// Hot spot, width, and what each pixel is, by which the height is known.
    using Shape = std::tuple<std::uint32_t, std::uint32_t, std::uint32_t, std::string>;

    static Shape shapeOf(const CursorPixels& cursor);

    std::map<Shape, ZVCursorType> shapes_;
};

}  // namespace zorvane
