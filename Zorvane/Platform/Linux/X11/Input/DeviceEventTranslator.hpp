// From the events of an X server's devices to the library's events.
#pragma once

#include <chrono>
#include <optional>

#include "Zorvane/Platform/CoreGraphics/CGEvent.hpp"
#include "Zorvane/Platform/Linux/X11/Input/DeviceEvent.hpp"
#include "Zorvane/Platform/Linux/X11/Input/ModifierMap.hpp"
#include "Zorvane/Platform/Linux/X11/Input/MouseButtons.hpp"
#include "Zorvane/Platform/Linux/X11/Input/ServerTime.hpp"

namespace zorvane {

/// Knows what is held, so it must be given every event in its order. A function of these and of the time it is given.
/// One thread.
class DeviceEventTranslator {
  public:
    explicit DeviceEventTranslator(ServerTime serverTime) : serverTime_(serverTime) {}

    /// Nothing for what is no event of the library's: the wheel, and modifiers that it doesn't know.
    std::optional<CGEvent> translate(const DeviceEvent& event, std::chrono::nanoseconds now);

  private:
    ServerTime serverTime_;
    MouseButtons buttons_;
    ModifierMap modifiers_;
};

}  // namespace zorvane
