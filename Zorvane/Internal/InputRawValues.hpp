// The names that the enumerations of input events have in JSON.
#pragma once

#include <array>
#include <string_view>

#include "Zorvane/Internal/RawValues.hpp"
#include "Zorvane/ZVInputEvent.hpp"

namespace zorvane {

template <>
struct RawValues<ZVInputEvent::TypeValue> {
    static constexpr auto names = std::to_array<std::string_view>({"mouse", "keyboard", "modifiersChanged"});
};

template <>
struct RawValues<ZVInputModifier> {
    static constexpr auto names =
        std::to_array<std::string_view>({"capsLock", "shift", "control", "option", "command", "function"});
};

template <>
struct RawValues<ZVMouseEventType> {
    static constexpr auto names = std::to_array<std::string_view>({"down", "up", "moved", "dragged", "cursorChanged"});
};

template <>
struct RawValues<ZVMouseButton> {
    static constexpr auto names = std::to_array<std::string_view>({"primary", "secondary", "center", "other"});
};

template <>
struct RawValues<ZVKeyboardEventType> {
    static constexpr auto names = std::to_array<std::string_view>({"down", "up"});
};

template <>
struct RawValues<ZVCursorType> {
    static constexpr auto names = std::to_array<std::string_view>({
        "custom",
        "arrow",
        "iBeam",
        "crosshair",
        "closedHand",
        "openHand",
        "pointingHand",
        "resizeLeft",
        "resizeRight",
        "resizeLeftRight",
        "resizeUp",
        "resizeDown",
        "resizeUpDown",
        "disappearingItem",
        "iBeamCursorForVerticalLayout",
        "operationNotAllowed",
        "dragLink",
        "dragCopy",
        "contextualMenu",
    });
};

template <>
struct RawValues<ZVKeyboardKeyType> {
    static constexpr auto names = std::to_array<std::string_view>({
        "character",
        "escape",
        "delete",
        "tab",
        "return",
        "space",
        "leftArrow",
        "rightArrow",
        "downArrow",
        "upArrow",
        "deleteForward",
        "home",
        "end",
        "pageUp",
        "pageDown",
        "clear",
        "f1",
        "f2",
        "f3",
        "f4",
        "f5",
        "f6",
        "f7",
        "f8",
        "f9",
        "f10",
        "f11",
        "f12",
        "f13",
        "f14",
        "f15",
        "f16",
        "f17",
        "f18",
        "f19",
    });
};

}  // namespace zorvane
