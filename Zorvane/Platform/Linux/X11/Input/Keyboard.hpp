// From an X server's keys to the library's keyboard events.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "Zorvane/Platform/CoreGraphics/CGEvent.hpp"
#include "Zorvane/Platform/Linux/X11/Input/DeviceEvent.hpp"
#include "Zorvane/Platform/Linux/X11/Input/KeyComposer.hpp"
#include "Zorvane/Platform/Linux/X11/Input/KeyboardLayout.hpp"
#include "Zorvane/Platform/Linux/X11/Input/ModifierKeys.hpp"

namespace zorvane {

/// Without a layout all keys are keys of signs, and type nothing that is known. One thread.
class Keyboard {
  public:
    /// `held`: the keys that are held when listening begins.
    Keyboard(std::unique_ptr<KeyboardLayout> layout, KeyComposer composer, const std::vector<std::uint8_t>& held);

    /// Has a new layout in force for events of this time of the server, and later.
    void replaceLayout(std::unique_ptr<KeyboardLayout> layout, std::uint32_t since);

    /// A key's press or release, or a change of the library's modifiers, without place and time. Nothing for a modifier
    /// key that changes none of them.
    std::optional<CGEvent> take(const DeviceEvent& event);

    /// The library's modifiers at an event of the mouse.
    CGEventFlags flags(const DeviceEvent& event);

  private:
    void followLayout(std::uint32_t time);
    ModifierMap modifierMap() const { return layout_ ? layout_->modifierMap() : ModifierMap(); }
    std::optional<CGEvent> takeModifier(const DeviceEvent& event, const ModifierEffect& effect);
    CGEvent takeKey(const DeviceEvent& event);
    std::int64_t keyCode(const DeviceEvent& event);
    NSEvent textOf(const DeviceEvent& event, std::uint32_t keysym);

    struct NextLayout {
        std::unique_ptr<KeyboardLayout> layout;
        std::uint32_t since;
    };

    std::unique_ptr<KeyboardLayout> layout_;
    std::optional<NextLayout> next_;
    KeyComposer composer_;
    ModifierKeys modifiers_;
};

}  // namespace zorvane
