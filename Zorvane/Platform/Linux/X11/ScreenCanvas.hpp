// Puts windows together into one picture, on the server.
#pragma once

#include <cstdint>
#include <optional>

#include "Zorvane/Platform/Linux/X11/ScreenArea.hpp"
#include "Zorvane/Platform/Linux/X11/ScreenBackdrop.hpp"
#include "Zorvane/Platform/Linux/X11/WindowStack.hpp"

namespace zorvane {

class XConnection;

/// A pixmap as large as an area of the screen, in which windows are drawn back to front. No call waits for the server,
/// and none allocates. A window that can't be drawn leaves what is behind it.
class ScreenCanvas {
  public:
    enum class Behind : std::uint8_t { black, desktop };

    /// All black. `format` is RENDER's number of the root window's pixels. Waits if there is a desktop to be seen.
    ScreenCanvas(XConnection& connection, const ScreenArea& area, std::uint32_t format, Behind behind);

    std::uint32_t pixmap() const { return pixmap_; }
    /// What lies behind the windows; null if that is black.
    const ScreenBackdrop* backdrop() const { return backdrop_ ? &*backdrop_ : nullptr; }

    /// Draws all visible windows within `rect`, a part of the area in root window coordinates.
    void draw(const WindowStack& stack, const PixelRect& rect);

  private:
    void drawBackdrop(const PixelRect& rect);
    void drawWindow(const StackedWindow& window, const PixelRect& rect);
    void blacken(const PixelRect& rect);

    XConnection& connection_;
    const ScreenArea area_;
    std::uint32_t pixmap_;
    std::uint32_t picture_;
    std::optional<ScreenBackdrop> backdrop_;
};

}  // namespace zorvane
