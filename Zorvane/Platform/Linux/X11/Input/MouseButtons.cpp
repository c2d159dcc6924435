#include "Zorvane/Platform/Linux/X11/Input/MouseButtons.hpp"

namespace zorvane {
namespace {

constexpr std::uint8_t left = 1;
constexpr std::uint8_t center = 2;
constexpr std::uint8_t right = 3;
constexpr std::uint8_t firstOther = 8;
constexpr std::uint16_t leftHeld = 1U << 8;
constexpr std::uint16_t centerHeld = 1U << 9;
constexpr std::uint16_t rightHeld = 1U << 10;

/// What can be done with one button.
struct ButtonActions {
    CGEventType down;
    CGEventType up;
    CGEventType dragged;
    std::int64_t number;
};

std::optional<ButtonActions> actionsOf(std::uint8_t button) {
    switch (button) {
        case left:
            return {{CGEventType::leftMouseDown, CGEventType::leftMouseUp, CGEventType::leftMouseDragged, 0}};
        case right:
            return {{CGEventType::rightMouseDown, CGEventType::rightMouseUp, CGEventType::rightMouseDragged, 1}};
        default:
            break;
    }
    if (button > center && button < firstOther) {
        return std::nullopt;
    }
    const int number = button == center ? 2 : 3 + button - firstOther;
    return {{CGEventType::otherMouseDown, CGEventType::otherMouseUp, CGEventType::otherMouseDragged, number}};
}

MouseAction dragging(std::uint8_t button) {
    const auto actions = actionsOf(button);
    return {actions->dragged, actions->number};
}

}  // namespace

std::optional<MouseAction> MouseButtons::take(const DeviceEvent& event) {
    if (event.kind == DeviceEvent::Kind::motion) {
        return motionNow(event.state);
    }
    const bool isPress = event.kind == DeviceEvent::Kind::buttonPress;
    if (!isPress && event.kind != DeviceEvent::Kind::buttonRelease) {
        return std::nullopt;
    }
    const auto actions = actionsOf(event.detail);
    if (!actions) {
        return std::nullopt;
    }
    if (event.detail >= firstOther) {
        held_.set(event.detail, isPress);
    }
    return {{isPress ? actions->down : actions->up, actions->number}};
}

MouseAction MouseButtons::motion(std::uint16_t state) {
    if (state & leftHeld) {
        return dragging(left);
    }
    if (state & rightHeld) {
        return dragging(right);
    }
    return state & centerHeld ? dragging(center) : MouseAction{CGEventType::mouseMoved, 0};
}

MouseAction MouseButtons::motionNow(std::uint16_t state) const {
    const MouseAction known = motion(state);
    if (known.type != CGEventType::mouseMoved || held_.none()) {
        return known;
    }
    std::uint8_t button = firstOther;
    while (!held_.test(button)) {
        ++button;
    }
    return dragging(button);
}

}  // namespace zorvane
