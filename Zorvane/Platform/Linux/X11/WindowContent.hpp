// What a window holds, apart from what lies over it.
#pragma once

#include <xcb/xcb.h>

#include <cstdint>

#include "Zorvane/Platform/Linux/X11/PictureFormats.hpp"
#include "Zorvane/Platform/Linux/X11/ScreenArea.hpp"

namespace zorvane {

class XConnection;

/// The server's things for one redirected top-level window: the watch over what is painted in it, its pixmap and its
/// shape. All may fail at any time, since the window is another program's; then it has no picture. One thread.
class WindowContent {
  public:
    WindowContent(XConnection& connection, std::uint32_t window) : connection_(connection), window_(window) {}
    WindowContent(const WindowContent&) = delete;
    WindowContent& operator=(const WindowContent&) = delete;
    ~WindowContent();

    /// From now on every stroke painted in the window is told of, each for itself, so that it is known what came before
    /// and after what else happens. Begins with all that is on the screen of it.
    void watchPainting();
    void ignorePainting();
    /// Keeps the server's own account of the painting short. To be called once in a while.
    void acknowledgePainting();

    /// Takes the pixmap that the window has now, if it is as large as the window, border and all: one that isn't
    /// redirected after all has the whole screen's. Waits. It stays as it is when the window gets another.
    void takePixmap(PictureFormat format, const PixelRect& bounds);
    void dropPixmap();
    bool hasPicture() const { return picture_ != 0; }
    std::uint32_t picture() const { return picture_; }

    /// Takes the shape that the window has now, as a region in its own coordinates. Waits.
    void takeShape();
    /// The region; 0 for a window that is a plain rectangle.
    std::uint32_t shape() const { return shape_; }

  private:
    void dropShape();

    XConnection& connection_;
    const std::uint32_t window_;
    std::uint32_t damage_ = 0;
    std::uint32_t pixmap_ = 0;
    std::uint32_t picture_ = 0;
    std::uint32_t shape_ = 0;
};

}  // namespace zorvane
