// What the window server tells of the mouse and the keyboard.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Zorvane/Platform/CoreGraphics/CGGeometry.hpp"

namespace zorvane {

enum class CGEventType : std::uint32_t {
    null = 0,
    leftMouseDown = 1,
    leftMouseUp = 2,
    rightMouseDown = 3,
    rightMouseUp = 4,
    mouseMoved = 5,
    leftMouseDragged = 6,
    rightMouseDragged = 7,
    keyDown = 10,
    keyUp = 11,
    flagsChanged = 12,
    otherMouseDown = 25,
    otherMouseUp = 26,
    otherMouseDragged = 27,
    tapDisabledByTimeout = 0xFFFFFFFE,
    tapDisabledByUserInput = 0xFFFFFFFF,
};

/// Modifier keys, as bits of one number.
enum class CGEventFlags : std::uint64_t {
    none = 0,
    maskAlphaShift = 0x10000,
    maskShift = 0x20000,
    maskControl = 0x40000,
    maskAlternate = 0x80000,
    maskCommand = 0x100000,
    maskSecondaryFn = 0x800000,
};

constexpr CGEventFlags operator|(CGEventFlags a, CGEventFlags b) {
    return static_cast<CGEventFlags>(static_cast<std::uint64_t>(a) | static_cast<std::uint64_t>(b));
}
constexpr CGEventFlags& operator|=(CGEventFlags& a, CGEventFlags b) {
    return a = a | b;
}
constexpr bool contains(CGEventFlags flags, CGEventFlags mask) {
    return (static_cast<std::uint64_t>(flags) & static_cast<std::uint64_t>(mask)) != 0;
}

/// What a user interface makes of an event: when it happened, and the text of a key.
struct NSEvent {
    double timestamp = 0;  ///< seconds on the host clock
    /// What the key typed: empty for a dead key that waits for the next one, absent if it is no key of text.
    std::optional<std::string> characters;
    /// What it would have typed with no modifier but shift; a dead key's own sign.
    std::optional<std::string> charactersIgnoringModifiers;

    bool operator==(const NSEvent&) const = default;
};

/// One event, or the state of pointer and modifiers at one moment. Text is valid UTF-8.
struct CGEvent {
    CGEventType type = CGEventType::null;
    CGPoint location;  ///< of the pointer at that moment; points, global coordinates
    CGEventFlags flags = CGEventFlags::none;
    std::int64_t mouseButtonNumber = 0;  ///< 0 primary, 1 secondary, 2 center, then the others
    std::int64_t keyboardEventKeycode = 0;
    std::int64_t keyboardEventAutorepeat = 0;  ///< 1 for an event that holding a key down made
    /// Absent for an event that a user interface makes nothing of.
    std::optional<NSEvent> nsEvent;

    bool operator==(const CGEvent&) const = default;
};

}  // namespace zorvane
