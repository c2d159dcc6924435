// Follows the X server's cursor and draws it into pictures.
#pragma once

#include <cstdint>

#include "Zorvane/Platform/CoreMedia/CVPixelBuffer.hpp"
#include "Zorvane/Platform/Linux/X11/ScreenArea.hpp"

struct xcb_xfixes_get_cursor_image_reply_t;

namespace zorvane {

class XConnection;

/// The server keeps the cursor out of what it lets others read, so it is fetched with each picture and drawn in. A
/// cursor that a program hides by the extension's own request is drawn all the same, because no client can ask for
/// that. One thread uses an overlay.
class CursorOverlay {
  public:
    /// Needs XFIXES 2.
    CursorOverlay(XConnection& connection, const ScreenArea& area) : connection_(connection), area_(area) {}

    /// Whether the cursor looks or lies otherwise than when it was last drawn, as far as the area shows. One round
    /// trip.
    bool hasChanged();

    /// Asks for the cursor. Doesn't wait.
    void request();
    /// Waits for what was last asked for, draws it, and tells which rows of the picture it took.
    RowSpan receiveAndDraw(CVPixelBuffer& picture);

  private:
    /// Where the cursor is seen in the area, and what it looks like. Equal looks have equal serial numbers.
    struct Appearance {
        std::uint32_t serial = 0;
        std::int32_t x = 0;
        std::int32_t y = 0;
        PixelRect visible;
        bool operator==(const Appearance&) const = default;
    };

    Appearance appearance(const xcb_xfixes_get_cursor_image_reply_t& reply) const;

    XConnection& connection_;
    const ScreenArea area_;
    Appearance drawn_;
    std::uint32_t request_ = 0;  // the sequence number of the request under way
};

}  // namespace zorvane
