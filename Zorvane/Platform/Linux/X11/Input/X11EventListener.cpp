#include "Zorvane/Platform/Linux/X11/Input/X11EventListener.hpp"

#include <poll.h>
#include <xcb/xcb.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <utility>

#include "Zorvane/Internal/Concurrency/Executor.hpp"
#include "Zorvane/Internal/Concurrency/MonotonicClock.hpp"
#include "Zorvane/Internal/Concurrency/ThreadName.hpp"
#include "Zorvane/Platform/Linux/X11/BrokenPipeSignal.hpp"
#include "Zorvane/Platform/Linux/X11/XAnswerLimit.hpp"
#include "Zorvane/Platform/Linux/X11/XConnection.hpp"
#include "Zorvane/Platform/Linux/X11/XReply.hpp"

namespace zorvane {
namespace {

std::chrono::nanoseconds now() {
    return MonotonicClock::shared()->now();
}

bool isOfInterest(CGEventType type, CGEventMask mask) {
    return (mask >> static_cast<std::uint32_t>(type) & 1) != 0;
}

/// The rules of composing are some thousand; nobody reads them for the mouse.
Keyboard makeKeyboard(const XConnection& connection, CGEventMask mask) {
    return {readKeyboardLayout(connection),
            isOfInterest(CGEventType::keyDown, mask) ? KeyComposer::ofUser() : KeyComposer(nullptr),
            readHeldKeys(connection)};
}

}  // namespace

X11EventListener::X11EventListener(std::shared_ptr<XConnection> control, std::shared_ptr<XConnection> data,
                                   CGEventMask eventsOfInterest, CGEventHandler handler)
    : eventsOfInterest_(eventsOfInterest),
      handler_(std::move(handler)),
      control_(std::move(control)),
      data_(std::move(data)),
      stream_(control_, data_),
      watch_(control_),
      keyboardWatch_(*control_),
      translator_(stream_.serverTime(), makeKeyboard(*control_, eventsOfInterest)) {
    control_->requireAlive();
    watch_.arm();
    thread_ = std::thread([this] { run(); });
}

X11EventListener::~X11EventListener() {
    {
        const MutexLock lock(mutex_);
        isEnding_ = true;
    }
    control_->hangUp();
    data_->hangUp();
    const PoolBlockingScope blocking;
    thread_.join();
}

void X11EventListener::flush() {
    const PoolBlockingScope blocking;
    const BrokenPipeScope brokenPipe;
    const XAnswerLimit limit(control_);
    MutexLock lock(mutex_);
    const std::uint32_t mark = ++marksMade_;
    stream_.mark();
    while (marksSeen_ < mark && !isOver_) {
        confirmed_.wait(lock);
    }
}

void X11EventListener::run() {
    setCurrentThreadName("zv.input");
    blockBrokenPipeSignal();
    for (bool isEnd = false; !isEnd;) {
        waitForInput();
        const RecordedInput input = stream_.take();
        followKeyboard();
        deliver(input);
        const bool isNoticed = std::exchange(isInputNoticed_, false);
        pace(isNoticed || !input.events.empty());
        confirm(input.marks);
        isEnd = input.isEnd || !control_->isAlive();
    }
    end();
}

void X11EventListener::waitForInput() const {
    int limit = -1;
    if (const auto deadline = pacer_.deadline()) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(*deadline - now());
        limit = static_cast<int>(std::max(left.count(), std::chrono::milliseconds::rep(0)));
    }
    std::array<pollfd, 2> sockets{
        pollfd{.fd = xcb_get_file_descriptor(control_->get()), .events = POLLIN, .revents = 0},
        pollfd{.fd = xcb_get_file_descriptor(data_->get()), .events = POLLIN, .revents = 0}};
    poll(sockets.data(), sockets.size(), limit);
}

void X11EventListener::takeControlEvents() {
    while (const XReply<xcb_generic_event_t> event{xcb_poll_for_event(control_->get())}) {
        isInputNoticed_ |= event->response_type == XCB_GE_GENERIC;
        keyboardWatch_.note(*event);
    }
}

/// The answers of a reading bring further events in, which don't wake the thread.
void X11EventListener::followKeyboard() {
    takeControlEvents();
    while (const auto change = keyboardWatch_.takeChange()) {
        if (auto layout = readKeyboardLayout(*control_)) {
            translator_.keyboard().replaceLayout(std::move(layout), *change);
        }
        takeControlEvents();
    }
}

void X11EventListener::deliver(const RecordedInput& input) {
    const auto arrival = now();
    for (const DeviceEvent& each : input.events) {
        const auto event = translator_.translate(each, arrival);
        if (event && isOfInterest(event->type, eventsOfInterest_)) {
            handler_(*event);
        }
    }
}

void X11EventListener::pace(bool isHeard) {
    switch (pacer_.next(isHeard, now())) {
        case DeliveryPacer::Step::none:
            break;
        case DeliveryPacer::Step::beginAsking:
            watch_.disarm();
            stream_.expedite();
            break;
        case DeliveryPacer::Step::ask:
            stream_.expedite();
            break;
        case DeliveryPacer::Step::rest:
            watch_.arm();
            stream_.expedite();
            break;
    }
}

void X11EventListener::confirm(std::uint32_t marks) {
    if (marks > 0) {
        const MutexLock lock(mutex_);
        marksSeen_ += marks;
        confirmed_.notify_all();
    }
}

void X11EventListener::end() {
    MutexLock lock(mutex_);
    const bool isEnding = isEnding_;
    lock.unlock();
    if (!isEnding) {
        handler_(CGEvent{.type = CGEventType::tapDisabledByUserInput});
    }
    lock.lock();
    isOver_ = true;
    confirmed_.notify_all();
}

}  // namespace zorvane
