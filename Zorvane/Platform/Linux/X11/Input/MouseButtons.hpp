// From an X server's buttons to the library's mouse events.
#pragma once

#include <bitset>
#include <cstdint>
#include <optional>

#include "Zorvane/Platform/CoreGraphics/CGEvent.hpp"
#include "Zorvane/Platform/Linux/X11/Input/DeviceEvent.hpp"

namespace zorvane {

/// What a mouse does, with the library's number of the button: 0 primary, 1 secondary, 2 center, then the others.
struct MouseAction {
    CGEventType type = CGEventType::null;
    std::int64_t buttonNumber = 0;

    bool operator==(const MouseAction&) const = default;
};

/// Which buttons are held. X counts left 1, center 2 and right 3, then four that stand for turns of the wheel, which
/// are no buttons here, then the others. One thread.
class MouseButtons {
  public:
    /// What a press, a release or a motion does; nothing for the wheel and for keys. Takes every event in its order.
    std::optional<MouseAction> take(const DeviceEvent& event);

    /// What moving the mouse does while the buttons of a core protocol's state are held, of which the first counts:
    /// primary, secondary, center. `mouseMoved` if there is none.
    static MouseAction motion(std::uint16_t state);

  private:
    MouseAction motionNow(std::uint16_t state) const;

    std::bitset<256> held_;  ///< those that the state has no bits for
};

}  // namespace zorvane
