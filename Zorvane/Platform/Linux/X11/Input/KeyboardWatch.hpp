// Which keyboard layout is in force on an X server.
#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "Zorvane/Platform/Linux/X11/Input/KeyboardLayout.hpp"

namespace zorvane {

class XConnection;

/// The layout of the core keyboard, by the XKB extension. Some round trips. Null if the server has none to tell of.
std::unique_ptr<KeyboardLayout> readKeyboardLayout(const XConnection& connection);

/// The keys that are held now. One round trip.
std::vector<std::uint8_t> readHeldKeys(const XConnection& connection);

/// Whether the layout changes. One thread.
class KeyboardWatch {
  public:
    /// Has the connection's events tell of changes. One round trip.
    explicit KeyboardWatch(const XConnection& connection);

    /// Takes an event of the connection.
    void note(const xcb_generic_event_t& event);
    /// Since when, in the server's time, another layout may be in force, if one is since this was last asked.
    std::optional<std::uint32_t> takeChange();

  private:
    std::uint8_t firstEvent_ = 0;  ///< 0 without the extension
    std::optional<std::uint32_t> changedAt_;
};

}  // namespace zorvane
