// What lies behind all windows.
#pragma once

#include <cstdint>

#include "Zorvane/Platform/Linux/X11/ScreenArea.hpp"

namespace zorvane {

class XConnection;

/// A copy of the root window's background in an area. Programs that set a picture say so in a property of the root
/// window; else it is the background that the root window is cleared with, or black under a compositor. What programs
/// draw on the root window without making it the background isn't part of it, for it can't be told from the windows
/// that cover it.
class ScreenBackdrop {
  public:
    /// Black until it is read. `format` is RENDER's number of the root window's pixels.
    ScreenBackdrop(XConnection& connection, const ScreenArea& area, std::uint32_t format);

    /// Copies the background as it is now. Waits.
    void read() const;
    /// Whether a property of the root window is one that tells of the background.
    bool isToldBy(std::uint32_t property) const;

    std::uint32_t picture() const { return picture_; }

  private:
    bool copyPicture(std::uint32_t property) const;
    void copyBackground() const;

    XConnection& connection_;
    const ScreenArea area_;
    const std::uint32_t format_;
    const std::uint32_t rootPicture_;   // the property that names a pixmap
    const std::uint32_t otherPicture_;  // another program's name for it
    const std::uint32_t setRoot_;       // changes when a program sets the background in the oldest way
    std::uint32_t pixmap_ = 0;
    std::uint32_t picture_ = 0;
    std::uint32_t context_ = 0;
};

}  // namespace zorvane
