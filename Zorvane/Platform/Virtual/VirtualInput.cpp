#include "Zorvane/Platform/Virtual/VirtualInput.hpp"

namespace zorvane {
namespace {

struct ButtonTypes {
    CGEventType down;
    CGEventType up;
    CGEventType dragged;
};

ButtonTypes typesOf(std::int64_t button) {
    switch (button) {
        case 0:
            return {CGEventType::leftMouseDown, CGEventType::leftMouseUp, CGEventType::leftMouseDragged};
        case 1:
            return {CGEventType::rightMouseDown, CGEventType::rightMouseUp, CGEventType::rightMouseDragged};
        default:
            return {CGEventType::otherMouseDown, CGEventType::otherMouseUp, CGEventType::otherMouseDragged};
    }
}

NSEvent textOf(const VirtualKey& key) {
    return {.characters = key.characters, .charactersIgnoringModifiers = key.charactersIgnoringModifiers};
}

}  // namespace

CGEvent VirtualInput::event(CGEventType type) const {
    CGEvent event;
    event.type = type;
    event.flags = flags;
    event.nsEvent.emplace();
    return event;
}

CGEvent VirtualInput::state() const {
    return heldButtons.empty() ? event(CGEventType::null) : movePointer();
}

CGEvent VirtualInput::movePointer() const {
    if (heldButtons.empty()) {
        return event(CGEventType::mouseMoved);
    }
    CGEvent dragged = event(typesOf(*heldButtons.begin()).dragged);
    dragged.mouseButtonNumber = *heldButtons.begin();
    return dragged;
}

CGEvent VirtualInput::pressButton(std::int64_t number) {
    heldButtons.insert(number);
    CGEvent pressed = event(typesOf(number).down);
    pressed.mouseButtonNumber = number;
    return pressed;
}

CGEvent VirtualInput::releaseButton(std::int64_t number) {
    heldButtons.erase(number);
    CGEvent released = event(typesOf(number).up);
    released.mouseButtonNumber = number;
    return released;
}

CGEvent VirtualInput::pressKey(const VirtualKey& key) {
    const bool isNew = heldKeys.insert(key.keycode).second;
    CGEvent pressed = event(CGEventType::keyDown);
    pressed.keyboardEventKeycode = key.keycode;
    pressed.keyboardEventAutorepeat = isNew ? 0 : 1;
    pressed.nsEvent = textOf(key);
    return pressed;
}

CGEvent VirtualInput::releaseKey(const VirtualKey& key) {
    heldKeys.erase(key.keycode);
    CGEvent released = event(CGEventType::keyUp);
    released.keyboardEventKeycode = key.keycode;
    released.nsEvent = textOf(key);
    return released;
}

CGEvent VirtualInput::setFlags(CGEventFlags newFlags) {
    flags = newFlags;
    return event(CGEventType::flagsChanged);
}

}  // namespace zorvane
