#include "Zorvane/Internal/Recorders/InputEventConversion.hpp"

#include <array>
#include <utility>

#include "Zorvane/Internal/KeyboardKeys.hpp"

namespace zorvane {
namespace {

constexpr std::array<std::pair<CGEventFlags, ZVInputModifier>, 6> modifierMasks{{
    {CGEventFlags::maskAlphaShift, ZVInputModifier::capsLock},
    {CGEventFlags::maskShift, ZVInputModifier::shift},
    {CGEventFlags::maskControl, ZVInputModifier::control},
    {CGEventFlags::maskAlternate, ZVInputModifier::option},
    {CGEventFlags::maskCommand, ZVInputModifier::command},
    {CGEventFlags::maskSecondaryFn, ZVInputModifier::function},
}};

}  // namespace

std::optional<ZVMouseButton> mouseButton(const CGEvent& event) {
    switch (event.type) {
        case CGEventType::leftMouseDown:
        case CGEventType::leftMouseUp:
        case CGEventType::leftMouseDragged:
            return ZVMouseButton::primary;
        case CGEventType::rightMouseDown:
        case CGEventType::rightMouseUp:
        case CGEventType::rightMouseDragged:
            return ZVMouseButton::secondary;
        case CGEventType::otherMouseDown:
        case CGEventType::otherMouseUp:
        case CGEventType::otherMouseDragged:
            return event.mouseButtonNumber == 2 ? ZVMouseButton::center : ZVMouseButton::other;
        default:
            return std::nullopt;
    }
}

ZVKeyboardKeyType keyboardKeyType(const CGEvent& event) {
    return keyboardKeyType(event.keyboardEventKeycode);
}

ZVInputModifiers toZVInputModifierSet(CGEventFlags flags) {
    ZVInputModifiers modifiers;
    for (const auto& [mask, modifier] : modifierMasks) {
        if (contains(flags, mask)) {
            modifiers.insert(modifier);
        }
    }
    return modifiers;
}

}  // namespace zorvane
