// What the root window's events tell of its children.
#pragma once

#include <xcb/xcb.h>

#include <cstdint>

#include "Zorvane/Platform/Linux/X11/ScreenArea.hpp"

namespace zorvane {

class XConnection;

/// Where a window lies: root window coordinates, the border included.
struct WindowPlace {
    PixelRect bounds;
    std::int32_t border = 0;
};

/// Hears what happened to windows, in order. A window may have gone by the time one hears of it. Numbers are the X
/// server's; a sibling of 0 means the bottom.
class WindowEventHandler {
  public:
    virtual void created(std::uint32_t window, const WindowPlace& place) = 0;
    virtual void destroyed(std::uint32_t window) = 0;
    virtual void mapped(std::uint32_t window) = 0;
    virtual void unmapped(std::uint32_t window) = 0;
    virtual void configured(std::uint32_t window, const WindowPlace& place, std::uint32_t siblingBelow) = 0;
    /// By its parent's resizing.
    virtual void moved(std::uint32_t window, std::int32_t x, std::int32_t y) = 0;
    virtual void raised(std::uint32_t window) = 0;
    virtual void lowered(std::uint32_t window) = 0;
    virtual void reparented(std::uint32_t window, std::uint32_t parent) = 0;
    /// A window that may lie deeper was given another child or has lost one.
    virtual void familyChanged(std::uint32_t window) = 0;
    /// Of any window but the root window.
    virtual void propertyChanged(std::uint32_t window, std::uint32_t property) = 0;

  protected:
    ~WindowEventHandler() = default;
};

/// Selects the events, in addition to what the connection has selected of the root window already. One round trip.
void selectWindowEvents(XConnection& connection);

/// Hands an event on if it tells of a child of the root window, or of a deeper window that is listened to. What other
/// programs made up doesn't count, nor does a window of the server's own: compositors draw to that, so it holds the
/// whole screen.
void dispatchWindowEvent(const xcb_generic_event_t& event, const XConnection& connection, WindowEventHandler& handler);

}  // namespace zorvane
