// The mouse buttons and the keyboard of a virtual desktop. A plain value, no thread, no clock.
#pragma once

#include <chrono>
#include <cstdint>
#include <exception>
#include <optional>
#include <set>
#include <string>

#include "Zorvane/Platform/CoreGraphics/CGEvent.hpp"

namespace zorvane {

/// A key, and the text that it types with the modifiers that are held.
struct VirtualKey {
    std::int64_t keycode = 0;
    std::optional<std::string> characters;
    std::optional<std::string> charactersIgnoringModifiers;
};

/// Why listeners can't be made; a null pointer: for no reason that is known.
using VirtualListeningFailure = std::optional<std::exception_ptr>;

/// What is held, and what goes wrong. Events that it gives lack the place of the pointer and the time.
struct VirtualInput {
    CGEventFlags flags = CGEventFlags::none;
    std::set<std::int64_t> heldButtons;
    std::set<std::int64_t> heldKeys;
    std::chrono::nanoseconds eventDelay{0};  ///< how long after it happened listeners hear of an event
    VirtualListeningFailure tapFailure;
    VirtualListeningFailure monitorFailure;

    /// Of the type `null`, or of a dragging type while a button is held.
    CGEvent state() const;
    CGEvent movePointer() const;
    CGEvent pressButton(std::int64_t number);
    CGEvent releaseButton(std::int64_t number);
    /// Of a key that is held: what holding it down makes.
    CGEvent pressKey(const VirtualKey& key);
    CGEvent releaseKey(const VirtualKey& key);
    CGEvent setFlags(CGEventFlags newFlags);

  private:
    CGEvent event(CGEventType type) const;
};

}  // namespace zorvane
