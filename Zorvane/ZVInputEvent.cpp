#include "Zorvane/ZVInputEvent.hpp"

#include "Zorvane/Internal/DiscriminatedUnion.hpp"
#include "Zorvane/Internal/InputRawValues.hpp"
#include "Zorvane/Internal/KeyboardKeys.hpp"
#include "Zorvane/Internal/StreamingJSONReader.hpp"
#include "Zorvane/Internal/ZVInputEventJSON.hpp"

namespace zorvane {

template <>
struct JSONFields<ZVMouseEvent> {
    static void visit(auto& fields, auto& event) {
        fields("button", event.button);
        fields("cursorType", event.cursorType);
        fields("modifiers", event.modifiers);
        fields("mouseEventType", event.mouseEventType);
        fields("time", event.time);
        fields("x", event.x);
        fields("y", event.y);
    }
};

template <>
struct JSONFields<ZVKeyboardEvent> {
    static void visit(auto& fields, auto& event) {
        fields("characters", event.characters);
        fields("isARepeat", event.isARepeat);
        fields("keySymbol", event.keySymbol);
        fields("keyTitle", event.keyTitle);
        fields("keyType", event.keyType);
        fields("keyboardEventType", event.keyboardEventType);
        fields("modifiers", event.modifiers);
        fields("time", event.time);
    }
};

template <>
struct JSONFields<ZVInputModifiersChangedEvent> {
    static void visit(auto& fields, auto& event) {
        fields("modifiers", event.modifiers);
        fields("time", event.time);
    }
};

void writeJSON(JSONWriter& writer, const ZVInputEvent& event) {
    std::visit([&](const auto& payload) { encodeValue(writer, payload, event.type()); }, event.payload());
}

ZVInputEvent readInputEvent(const JSONReader& reader) {
    switch (decodeType<ZVInputEvent::TypeValue>(reader)) {
        case ZVInputEvent::TypeValue::mouse:
            return ZVInputEvent(decodeSingleValueContainer<ZVMouseEvent>(reader));
        case ZVInputEvent::TypeValue::keyboard:
            return ZVInputEvent(decodeSingleValueContainer<ZVKeyboardEvent>(reader));
        case ZVInputEvent::TypeValue::modifiersChanged:
            break;
    }
    return ZVInputEvent(decodeSingleValueContainer<ZVInputModifiersChangedEvent>(reader));
}

const ZVTime& ZVInputEvent::time() const {
    return std::visit([](const auto& payload) -> const ZVTime& { return payload.time; }, payload_);
}

const ZVInputModifiers& ZVInputEvent::modifiers() const {
    return std::visit([](const auto& payload) -> const ZVInputModifiers& { return payload.modifiers; }, payload_);
}

std::string ZVInputEvent::toJSON() const {
    return compactJSON(*this);
}

ZVInputEvent ZVInputEvent::fromJSON(std::string_view json) {
    return readInputEvent(JSONDocument(json).root());
}

std::vector<ZVInputEvent> ZVInputEvent::read(const std::filesystem::path& sideFile) {
    std::vector<ZVInputEvent> events;
    forEach(sideFile, [&events](ZVInputEvent event) { events.push_back(std::move(event)); });
    return events;
}

void ZVInputEvent::forEach(const std::filesystem::path& sideFile, const std::function<void(ZVInputEvent)>& body) {
    forEachElementOfFile(sideFile, [&body](const JSONReader& element) { body(readInputEvent(element)); });
}

std::string_view rawValue(ZVInputModifier modifier) {
    return rawValueOf(modifier);
}

std::string_view rawValue(ZVMouseEventType type) {
    return rawValueOf(type);
}

std::string_view rawValue(ZVMouseButton button) {
    return rawValueOf(button);
}

std::string_view rawValue(ZVKeyboardEventType type) {
    return rawValueOf(type);
}

std::string_view rawValue(ZVCursorType type) {
    return rawValueOf(type);
}

std::string_view rawValue(ZVKeyboardKeyType type) {
    return rawValueOf(type);
}

std::string_view title(ZVKeyboardKeyType keyType) {
    return keyboardKey(keyType).title;
}

std::string_view symbol(ZVKeyboardKeyType keyType) {
    return keyboardKey(keyType).symbol;
}

}  // namespace zorvane
