// Has a window painted anew.
#pragma once

#include <cstdint>

#include "Zorvane/Platform/Linux/X11/ScreenArea.hpp"

namespace zorvane {

class XConnection;

/// Clears a part of a window, and what lies in it, to the background, and has their programs told that it came into
/// view, so that they paint it. `rect` is in the window's own coordinates. Returns the number of the request before
/// which nothing was done. A few round trips for each window within.
std::uint32_t askToPaint(const XConnection& connection, std::uint32_t window, const PixelRect& rect);

}  // namespace zorvane
