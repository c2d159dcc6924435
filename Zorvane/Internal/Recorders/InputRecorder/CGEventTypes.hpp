// The sets of events that a recorder of input wants.
#pragma once

#include <cstdint>
#include <initializer_list>

#include "Zorvane/Platform/AppKit/NSEvents.hpp"
#include "Zorvane/Platform/CoreGraphics/CGEvents.hpp"

namespace zorvane {

/// Types from 32 on have no bit.
constexpr CGEventMask eventMask(std::initializer_list<CGEventType> types) {
    CGEventMask mask = 0;
    for (const CGEventType type : types) {
        const auto number = static_cast<std::uint32_t>(type);
        mask |= number < 32 ? CGEventMask(1) << number : 0;
    }
    return mask;
}

constexpr bool contains(CGEventMask types, CGEventType type) {
    return (types & eventMask({type})) != 0;
}

inline constexpr CGEventMask mouseClickEventTypes =
    eventMask({CGEventType::leftMouseDown, CGEventType::rightMouseDown, CGEventType::otherMouseDown,
               CGEventType::leftMouseUp, CGEventType::rightMouseUp, CGEventType::otherMouseUp});
inline constexpr CGEventMask mouseMovementEventTypes =
    eventMask({CGEventType::mouseMoved, CGEventType::leftMouseDragged, CGEventType::otherMouseDragged,
               CGEventType::rightMouseDragged});
inline constexpr CGEventMask mouseEventTypes = mouseClickEventTypes | mouseMovementEventTypes;

inline constexpr CGEventMask keyPressEventTypes = eventMask({CGEventType::keyDown, CGEventType::keyUp});
inline constexpr CGEventMask inputModifiersChangedTypes = eventMask({CGEventType::flagsChanged});
inline constexpr CGEventMask keyboardEventTypes = keyPressEventTypes | inputModifiersChangedTypes;

/// The mouse, as a monitor of events names it.
inline constexpr NSEventMask mouseEventsTypeMask = 0xE0000FE;
static_assert(mouseEventsTypeMask == mouseEventTypes);

/// A tap's last event: the system has ended it. These types have no bit in a mask; every tap hears them.
constexpr bool isTapDisabled(CGEventType type) {
    return type == CGEventType::tapDisabledByTimeout || type == CGEventType::tapDisabledByUserInput;
}

}  // namespace zorvane
