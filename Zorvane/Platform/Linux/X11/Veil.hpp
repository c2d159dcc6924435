// Which parts of a window can't be trusted yet. Pure.
#pragma once

#include <span>
#include <vector>

#include "Zorvane/Platform/Linux/X11/ScreenArea.hpp"

namespace zorvane {

/// When the server gives a window a pixmap of its own, or one of another size, it fills that with what the screen shows
/// there, other windows included. What lay under a window that is left out stays veiled until the window has been
/// painted there. Coordinates are the window's.
class Veil {
  public:
    void lay(const PixelRect& rect);
    /// The window was painted here.
    void lift(const PixelRect& rect);
    void clear() { parts_.clear(); }

    bool isEmpty() const { return parts_.empty(); }
    /// The smallest rectangle around it.
    PixelRect extent() const;
    /// What is veiled; some of it maybe twice.
    std::span<const PixelRect> parts() const { return parts_; }

  private:
    std::vector<PixelRect> parts_;
    std::vector<PixelRect> left_;  // kept for its memory
};

}  // namespace zorvane
