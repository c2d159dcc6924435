#include "Zorvane/Internal/Recorders/InputRecorder/InputEventCreation.hpp"

#include <fmt/format.h>

#include "Zorvane/Internal/Recorders/InputEventConversion.hpp"
#include "Zorvane/Platform/Foundation/UpperCase.hpp"
#include "Zorvane/ZVError.hpp"

namespace zorvane {
namespace {

ZVMouseEventType mouseEventType(CGEventType type) {
    switch (type) {
        case CGEventType::leftMouseDown:
        case CGEventType::rightMouseDown:
        case CGEventType::otherMouseDown:
            return ZVMouseEventType::down;
        case CGEventType::leftMouseUp:
        case CGEventType::rightMouseUp:
        case CGEventType::otherMouseUp:
            return ZVMouseEventType::up;
        case CGEventType::leftMouseDragged:
        case CGEventType::rightMouseDragged:
        case CGEventType::otherMouseDragged:
            return ZVMouseEventType::dragged;
        default:
            return ZVMouseEventType::moved;
    }
}

ZVError keypressError(const std::string& debugDescription) {
    return ZVError::internalError(debugDescription, "Failed to record keypress.");
}

ZVKeyboardEventType keyboardEventType(CGEventType type) {
    if (type != CGEventType::keyDown && type != CGEventType::keyUp) {
        throw keypressError(fmt::format("Unknown CGEventType: {}", static_cast<std::uint32_t>(type)));
    }
    return type == CGEventType::keyDown ? ZVKeyboardEventType::down : ZVKeyboardEventType::up;
}

/// Shows a key of text by what it types.
void describeCharacter(ZVKeyboardEvent& event, const NSEvent& nsEvent) {
    const auto& unmodified = nsEvent.charactersIgnoringModifiers;
    const auto& base = unmodified ? unmodified : nsEvent.characters;
    if (base) {
        event.keyTitle = uppercased(*base);
        event.keySymbol = event.keyTitle;
    }
    event.characters = nsEvent.characters ? nsEvent.characters : unmodified;
}

void place(ZVMouseEvent& event, const CGPoint& location, const CGRect& crop) {
    event.x = (location.x - crop.origin.x) / crop.size.width;
    event.y = (location.y - crop.origin.y) / crop.size.height;
}

}  // namespace

ZVMouseEvent createZVMouseEvent(const CGEvent& cgEvent, const ZVTime& time, ZVCursorType cursorType,
                                const CGRect& crop) {
    ZVMouseEvent event;
    event.mouseEventType = mouseEventType(cgEvent.type);
    event.time = time;
    event.modifiers = toZVInputModifierSet(cgEvent.flags);
    event.button = mouseButton(cgEvent);
    event.cursorType = cursorType;
    place(event, cgEvent.location, crop);
    return event;
}

ZVKeyboardEvent createZVKeyboardEvent(const CGEvent& cgEvent, const ZVTime& time) {
    ZVKeyboardEvent event;
    event.keyboardEventType = keyboardEventType(cgEvent.type);
    event.time = time;
    event.modifiers = toZVInputModifierSet(cgEvent.flags);
    event.keyType = keyboardKeyType(cgEvent);
    event.keyTitle = title(event.keyType);
    event.keySymbol = symbol(event.keyType);
    event.isARepeat = cgEvent.keyboardEventAutorepeat == 1;
    if (event.keyType == ZVKeyboardKeyType::character) {
        if (!cgEvent.nsEvent) {
            throw keypressError("Failed to create NSEvent from CGEvent.");
        }
        describeCharacter(event, *cgEvent.nsEvent);
    }
    return event;
}

ZVMouseEvent createCursorChangedEvent(const CursorTimeline::Observation& observation, const ZVTime& time,
                                      const CGRect& crop) {
    ZVMouseEvent event;
    event.mouseEventType = ZVMouseEventType::cursorChanged;
    event.time = time;
    event.modifiers = toZVInputModifierSet(observation.flags);
    event.cursorType = observation.cursorType;
    place(event, observation.location, crop);
    return event;
}

}  // namespace zorvane
