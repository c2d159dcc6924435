#include "Zorvane/Platform/Linux/X11/Input/DeviceEventTranslator.hpp"

namespace zorvane {

std::optional<CGEvent> DeviceEventTranslator::translate(const DeviceEvent& event, std::chrono::nanoseconds now) {
    const std::chrono::duration<double> timestamp = serverTime_.hostTime(event.time, now);
    const auto action = buttons_.take(event);
    if (!action) {
        return std::nullopt;
    }
    CGEvent translated;
    translated.type = action->type;
    translated.location = {static_cast<double>(event.x), static_cast<double>(event.y)};
    translated.flags = modifiers_.flags(event.state);
    translated.mouseButtonNumber = action->buttonNumber;
    translated.nsEvent = NSEvent{.timestamp = timestamp.count()};
    return translated;
}

}  // namespace zorvane
