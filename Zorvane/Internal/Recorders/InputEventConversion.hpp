// What an event of the window server says, in the terms of the side file.
#pragma once

#include <optional>

#include "Zorvane/Platform/CoreGraphics/CGEvent.hpp"
#include "Zorvane/ZVInputEvent.hpp"

namespace zorvane {

/// The button that went down or up or is held in a drag; nothing for every other event.
std::optional<ZVMouseButton> mouseButton(const CGEvent& event);

/// The kind of the key that an event of the keyboard is about.
ZVKeyboardKeyType keyboardKeyType(const CGEvent& event);

ZVInputModifiers toZVInputModifierSet(CGEventFlags flags);

}  // namespace zorvane
