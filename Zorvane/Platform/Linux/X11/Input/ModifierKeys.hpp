// What is held of the keys that are modifiers.
#pragma once

#include <cstdint>
#include <map>

#include "Zorvane/Platform/Linux/X11/Input/KeyboardLayout.hpp"

namespace zorvane {

/// From the modifiers before a modifier key's press or release, which events tell, to those after it. One thread.
class ModifierKeys {
  public:
    /// A key that was held before the first event. What it locks counts as locked by this press, and stays.
    void assumeHeld(std::uint8_t key, const ModifierEffect& effect);

    bool holds(std::uint8_t key) const { return held_.contains(key); }

    std::uint16_t press(std::uint8_t key, const ModifierEffect& effect, std::uint16_t before);
    std::uint16_t release(std::uint8_t key, std::uint16_t before);

  private:
    struct Held {
        ModifierEffect effect;
        std::uint16_t locked = 0;  ///< of its modifiers, those that were locked when it was pressed
    };

    std::uint16_t heldBeside(std::uint8_t key) const;

    std::map<std::uint8_t, Held> held_;
};

}  // namespace zorvane
