#include "Zorvane/Platform/Linux/X11/Input/DeviceEventTranslator.hpp"

namespace zorvane {

std::optional<CGEvent> DeviceEventTranslator::translate(const DeviceEvent& event, std::chrono::nanoseconds now) {
    const std::chrono::duration<double> timestamp = serverTime_.hostTime(event.time, now);
    const bool isKey = event.kind == DeviceEvent::Kind::keyPress || event.kind == DeviceEvent::Kind::keyRelease;
    auto translated = isKey ? keyboard_.take(event) : translateMouse(event);
    if (translated) {
        translated->location = {static_cast<double>(event.x), static_cast<double>(event.y)};
        translated->nsEvent->timestamp = timestamp.count();
    }
    return translated;
}

std::optional<CGEvent> DeviceEventTranslator::translateMouse(const DeviceEvent& event) {
    const auto action = buttons_.take(event);
    if (!action) {
        return std::nullopt;
    }
    CGEvent translated;
    translated.type = action->type;
    translated.flags = keyboard_.flags(event);
    translated.mouseButtonNumber = action->buttonNumber;
    translated.nsEvent.emplace();
    return translated;
}

}  // namespace zorvane
