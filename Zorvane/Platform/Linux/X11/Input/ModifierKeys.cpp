#include "Zorvane/Platform/Linux/X11/Input/ModifierKeys.hpp"

namespace zorvane {

void ModifierKeys::assumeHeld(std::uint8_t key, const ModifierEffect& effect) {
    held_[key] = {effect, 0};
}

/// A modifier that is set though no key holds it is locked.
std::uint16_t ModifierKeys::press(std::uint8_t key, const ModifierEffect& effect, std::uint16_t before) {
    const int locked = before & ~heldBeside(key) & effect.modifiers;
    held_[key] = {effect, static_cast<std::uint16_t>(locked)};
    return before | effect.modifiers;
}

/// A key that locks lets go of what was locked when it was pressed, other keys leave that.
std::uint16_t ModifierKeys::release(std::uint8_t key, std::uint16_t before) {
    const auto found = held_.find(key);
    if (found == held_.end()) {
        return before;
    }
    const Held held = found->second;
    held_.erase(found);
    const int ended = held.effect.locks ? held.locked : held.effect.modifiers & ~held.locked;
    return static_cast<std::uint16_t>(before & ~(ended & ~heldBeside(key)));
}

std::uint16_t ModifierKeys::heldBeside(std::uint8_t key) const {
    std::uint16_t modifiers = 0;
    for (const auto& [each, held] : held_) {
        if (each != key && !held.effect.locks) {
            modifiers |= held.effect.modifiers;
        }
    }
    return modifiers;
}

}  // namespace zorvane
