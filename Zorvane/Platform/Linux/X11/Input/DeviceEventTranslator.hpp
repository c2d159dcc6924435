// From the events of an X server's devices to the library's events.
#pragma once

#include <chrono>
#include <optional>
#include <utility>

#include "Zorvane/Platform/CoreGraphics/CGEvent.hpp"
#include "Zorvane/Platform/Linux/X11/Input/DeviceEvent.hpp"
#include "Zorvane/Platform/Linux/X11/Input/Keyboard.hpp"
#include "Zorvane/Platform/Linux/X11/Input/MouseButtons.hpp"
#include "Zorvane/Platform/Linux/X11/Input/ServerTime.hpp"

namespace zorvane {

/// Knows what is held, so it must be given every event in its order. A function of these and of the time it is given.
/// One thread.
class DeviceEventTranslator {
  public:
    DeviceEventTranslator(ServerTime serverTime, Keyboard keyboard)
        : serverTime_(serverTime), keyboard_(std::move(keyboard)) {}

    Keyboard& keyboard() { return keyboard_; }

    /// Nothing for what is no event of the library's: the wheel, and modifier keys that change none of its modifiers.
    std::optional<CGEvent> translate(const DeviceEvent& event, std::chrono::nanoseconds now);

  private:
    std::optional<CGEvent> translateMouse(const DeviceEvent& event);

    ServerTime serverTime_;
    MouseButtons buttons_;
    Keyboard keyboard_;
};

}  // namespace zorvane
