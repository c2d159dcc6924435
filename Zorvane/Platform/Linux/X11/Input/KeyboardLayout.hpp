// What the keys of a keyboard mean.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Zorvane/Platform/Linux/X11/Input/ModifierMap.hpp"
#include "Zorvane/Platform/Linux/X11/Input/XkbHandles.hpp"

namespace zorvane {

/// What holding a key does to the modifiers.
struct ModifierEffect {
    std::uint16_t modifiers = 0;
    bool locks = false;  ///< they stay until it is pressed once more
};

/// One keymap. Keys go by the server's numbers, states are those of the core protocol. One thread.
class KeyboardLayout {
  public:
    explicit KeyboardLayout(XkbHandle<xkb_keymap> keymap);

    std::uint32_t keysym(std::uint8_t key, std::uint16_t state);
    /// What the key types; empty for a key that types nothing. With Control, letters type control characters.
    std::string text(std::uint8_t key, std::uint16_t state);
    /// The same with no modifier but Shift and Num Lock; a dead key's own sign.
    std::string plainText(std::uint8_t key, std::uint16_t state);
    /// Nothing for a key that isn't a modifier.
    std::optional<ModifierEffect> modifierEffect(std::uint8_t key, std::uint16_t state);

    const ModifierMap& modifierMap() const { return modifierMap_; }

  private:
    void setState(std::uint16_t state);
    ModifierMap findModifiers();

    const XkbHandle<xkb_keymap> keymap_;
    const XkbHandle<xkb_state> state_;  ///< of what was last asked about
    const ModifierMap modifierMap_;
};

}  // namespace zorvane
