#include "Zorvane/Internal/Recorders/InputRecorder/CGEventStream.hpp"

#include <utility>

#include "Zorvane/Internal/Recorders/InputRecorder/CGEventTapError.hpp"
#include "Zorvane/Internal/Recorders/InputRecorder/CGEventTypes.hpp"
#include "Zorvane/Platform/Platform.hpp"
#include "Zorvane/ZVError.hpp"

namespace zorvane {
namespace {

using Listener = std::unique_ptr<CGEventListener>;

Listener required(Listener monitor, const char* complaint) {
    if (!monitor) {
        throw ZVError::internalError(complaint, "Failed to setup mouse monitoring.");
    }
    return monitor;
}

Listener required(Listener tap) {
    if (!tap) {
        throw CGEventTapError(CGEventTapError::Case::tapCreationFailed);
    }
    return tap;
}

/// Puts what a listener hears into the stream.
CGEventHandler feed(const AsyncThrowingStream<CGEvent>::Source& source) {
    return [source](const CGEvent& event) {
        if (isTapDisabled(event.type)) {
            const CGEventTapError error(CGEventTapError::Case::tapDisabledByUserInput);
            source.finish(std::make_exception_ptr(error));
        } else {
            source.yield(event);
        }
    };
}

}  // namespace

// `listen` makes the listeners and throws if it can't.
template <class Listen>
std::shared_ptr<CGEventStream> CGEventStream::make(const Listen& listen) {
    auto [stream, source] = Stream::make(StreamBuffering::unbounded());
    std::shared_ptr<CGEventStream> events(new CGEventStream(std::move(stream), source));
    try {
        events->listeners_ = listen(source);
    } catch (...) {
        source.finish(std::current_exception());
    }
    return events;
}

std::shared_ptr<CGEventStream> CGEventStream::eventTapForEvents(CGEventMask matching) {
    return make([matching](const Stream::Source& source) {
        Listeners listeners;
        listeners.push_back(required(Platform::current()->events->tapCreate(matching, feed(source))));
        return listeners;
    });
}

std::shared_ptr<CGEventStream> CGEventStream::combinedMonitorForEvents(NSEventMask matching) {
    return make([matching](const Stream::Source& source) {
        const auto monitors = Platform::current()->eventMonitors;
        Listeners listeners;
        listeners.push_back(
            required(monitors->addGlobalMonitor(matching, feed(source)), "Global monitor returned nil."));
        listeners.push_back(required(monitors->addLocalMonitor(matching, feed(source)), "Local monitor returned nil."));
        return listeners;
    });
}

void CGEventStream::finish() {
    for (const Listener& listener : listeners_) {
        listener->flush();
    }
    listeners_.clear();
    source_.finish();
}

}  // namespace zorvane
