#include "Zorvane/Platform/Linux/X11/Input/X11Events.hpp"

#include <xcb/xcb.h>

#include "Zorvane/Internal/Concurrency/Executor.hpp"
#include "Zorvane/Internal/Concurrency/MonotonicClock.hpp"
#include "Zorvane/Platform/Foundation/NSError.hpp"
#include "Zorvane/Platform/Linux/X11/BrokenPipeSignal.hpp"
#include "Zorvane/Platform/Linux/X11/Input/KeyboardWatch.hpp"
#include "Zorvane/Platform/Linux/X11/Input/MouseButtons.hpp"
#include "Zorvane/Platform/Linux/X11/Input/X11EventListener.hpp"
#include "Zorvane/Platform/Linux/X11/XAnswerLimit.hpp"
#include "Zorvane/Platform/Linux/X11/XConnection.hpp"
#include "Zorvane/Platform/Linux/X11/XReply.hpp"
#include "Zorvane/Platform/Linux/X11/XSession.hpp"

namespace zorvane {
namespace {

/// Hears nothing.
class SilentListener final : public CGEventListener {
  public:
    void flush() override {}
};

CGEvent eventOf(const xcb_query_pointer_reply_t& pointer, const ModifierMap& modifiers, std::chrono::nanoseconds time) {
    const MouseAction action = MouseButtons::motion(pointer.mask);
    CGEvent event;
    if (action.type != CGEventType::mouseMoved) {
        event.type = action.type;
        event.mouseButtonNumber = action.buttonNumber;
    }
    event.location = {static_cast<double>(pointer.root_x), static_cast<double>(pointer.root_y)};
    event.flags = modifiers.flags(pointer.mask);
    event.nsEvent = NSEvent{.timestamp = std::chrono::duration<double>(time).count()};
    return event;
}

}  // namespace

std::optional<CGEvent> X11Events::create() {
    try {
        const XQuery connection = session_->query();
        const auto query = xcb_query_pointer(connection->get(), connection->root());
        const XReply<xcb_query_pointer_reply_t> pointer(xcb_query_pointer_reply(connection->get(), query, nullptr));
        const auto time = MonotonicClock::shared()->now();
        return pointer ? std::optional(eventOf(*pointer, modifierMap(*connection), time)) : std::nullopt;
    } catch (const NSError&) {
        return std::nullopt;
    }
}

ModifierMap X11Events::modifierMap(const XConnection& connection) {
    const MutexLock lock(mutex_);
    if (!modifierMap_) {
        if (const auto layout = readKeyboardLayout(connection)) {
            modifierMap_ = layout->modifierMap();
        }
    }
    return modifierMap_.value_or(ModifierMap());
}

std::unique_ptr<CGEventListener> X11Events::tapCreate(CGEventMask eventsOfInterest, CGEventHandler handler) {
    const PoolBlockingScope blocking;
    const BrokenPipeScope brokenPipe;
    const auto controlOpening = XConnection::beginOpening();
    const auto dataOpening = XConnection::beginOpening();
    const auto control = XConnection::await(controlOpening);
    const auto data = XConnection::await(dataOpening);
    const XAnswerLimit controlLimit(control);
    const XAnswerLimit dataLimit(data);
    return std::make_unique<X11EventListener>(control, data, eventsOfInterest, std::move(handler));
}

std::unique_ptr<CGEventListener> X11EventMonitors::addGlobalMonitor(NSEventMask mask, CGEventHandler handler) {
    return events_->tapCreate(mask, std::move(handler));
}

std::unique_ptr<CGEventListener> X11EventMonitors::addLocalMonitor(NSEventMask, CGEventHandler) {
    return std::make_unique<SilentListener>();
}

}  // namespace zorvane
