// The words about mouse and keyboard.
#include <cmath>
#include <utility>

#include "Zorvane/Platform/Virtual/VirtualMoment.hpp"

namespace zorvane {

const VirtualMoment& VirtualMoment::changeInput(std::function<CGEvent(VirtualInput&)> happen) const {
    return perform([happen = std::move(happen)](VirtualDesktop& desktop) {
        CGEvent event = desktop.withState([&happen](VirtualDesktopState& state) {
            CGEvent happened = happen(state.input);
            happened.location = state.scene.pointer.value_or(CGPoint());
            return happened;
        });
        event.nsEvent->timestamp = std::chrono::duration<double>(desktop.clock()->now()).count();
        desktop.eventHandlers()->call(event);
    });
}

const VirtualMoment& VirtualMoment::pressButton(std::int64_t number) const {
    return changeInput([number](VirtualInput& input) { return input.pressButton(number); });
}

const VirtualMoment& VirtualMoment::releaseButton(std::int64_t number) const {
    return changeInput([number](VirtualInput& input) { return input.releaseButton(number); });
}

const VirtualMoment& VirtualMoment::pressKey(VirtualKey key) const {
    return changeInput([key = std::move(key)](VirtualInput& input) { return input.pressKey(key); });
}

const VirtualMoment& VirtualMoment::releaseKey(VirtualKey key) const {
    return changeInput([key = std::move(key)](VirtualInput& input) { return input.releaseKey(key); });
}

const VirtualMoment& VirtualMoment::setFlags(CGEventFlags flags) const {
    return changeInput([flags](VirtualInput& input) { return input.setFlags(flags); });
}

const VirtualMoment& VirtualMoment::tellEvent(CGEvent event) const {
    return perform([event = std::move(event)](VirtualDesktop& desktop) { desktop.eventHandlers()->call(event); });
}

const VirtualMoment& VirtualMoment::disableTaps(CGEventType reason) const {
    CGEvent event;
    event.type = reason;
    return tellEvent(std::move(event));
}

const VirtualMoment& VirtualMoment::delayEvents(double seconds) const {
    const std::chrono::nanoseconds delay(std::llround(seconds * 1e9));
    return change([delay](VirtualDesktopState& state) { state.input.eventDelay = delay; });
}

const VirtualMoment& VirtualMoment::failTaps(VirtualListeningFailure failure) const {
    return change([failure = std::move(failure)](VirtualDesktopState& state) { state.input.tapFailure = failure; });
}

const VirtualMoment& VirtualMoment::failMonitors(VirtualListeningFailure failure) const {
    return change([failure = std::move(failure)](VirtualDesktopState& state) { state.input.monitorFailure = failure; });
}

}  // namespace zorvane
