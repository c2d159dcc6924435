#include "Zorvane/Platform/Virtual/VirtualEvents.hpp"

#include <chrono>
#include <deque>

#include "Zorvane/Internal/Concurrency/ThreadSafety.hpp"

namespace zorvane {
namespace {

using std::chrono::nanoseconds;

bool disablesTap(CGEventType type) {
    return type == CGEventType::tapDisabledByTimeout || type == CGEventType::tapDisabledByUserInput;
}

enum class Kind { tap, monitor };

/// One listener's events: held back for as long as the script says, and handed on in their order.
class Delivery {
  public:
    Delivery(Kind kind, CGEventMask mask, CGEventHandler handler)
        : kind_(kind), mask_(mask), handler_(std::move(handler)) {}

    bool wants(CGEventType type) const {
        const auto number = static_cast<std::uint32_t>(type);
        return disablesTap(type) ? kind_ == Kind::tap : number < 64 && (mask_ >> number & 1U) != 0;
    }

    void hold(const CGEvent& event, nanoseconds due) {
        MutexLock lock(mutex_);
        if (!ended_) {
            held_.push_back({event, due});
        }
    }

    void handOn(nanoseconds dueUntil) {
        MutexLock lock(mutex_);
        while (!ended_ && !held_.empty() && held_.front().due <= dueUntil) {
            const CGEvent event = std::move(held_.front().event);
            held_.pop_front();
            ended_ = disablesTap(event.type);
            handler_(event);
        }
    }

    void end() {
        MutexLock lock(mutex_);
        ended_ = true;
    }

  private:
    struct Held {
        CGEvent event;
        nanoseconds due;
    };

    const Kind kind_;
    const CGEventMask mask_;
    const CGEventHandler handler_;
    Mutex mutex_;  // held during calls of the handler
    std::deque<Held> held_ ZV_GUARDED_BY(mutex_);
    bool ended_ ZV_GUARDED_BY(mutex_) = false;
};

void deliver(VirtualDesktop& desktop, const std::shared_ptr<Delivery>& delivery, const CGEvent& event) {
    const nanoseconds delay = desktop.withState([](VirtualDesktopState& state) { return state.input.eventDelay; });
    const nanoseconds due = desktop.clock()->now() + delay;
    delivery->hold(event, due);
    desktop.perform(due, [weak = std::weak_ptr(delivery), due](VirtualDesktop&) {
        if (const auto held = weak.lock()) {
            held->handOn(due);
        }
    });
}

class VirtualEventListener final : public CGEventListener {
  public:
    VirtualEventListener(VirtualDesktop& desktop, std::shared_ptr<Delivery> delivery)
        : delivery_(std::move(delivery)),
          observation_(desktop.eventHandlers()->observe([&desktop, delivery = delivery_](const CGEvent& event) {
              if (delivery->wants(event.type)) {
                  deliver(desktop, delivery, event);
              }
          })) {}
    ~VirtualEventListener() override {
        observation_.invalidate();
        delivery_->end();
    }
    VirtualEventListener(const VirtualEventListener&) = delete;
    VirtualEventListener& operator=(const VirtualEventListener&) = delete;

    void flush() override { delivery_->handOn(nanoseconds::max()); }

  private:
    const std::shared_ptr<Delivery> delivery_;
    NSKeyValueObservation observation_;
};

/// On a virtual desktop no event is for this program.
class DeafListener final : public CGEventListener {
  public:
    void flush() override {}
};

std::unique_ptr<CGEventListener> listen(VirtualDesktop& desktop, const VirtualListeningFailure& failure,
                                        std::shared_ptr<Delivery> delivery) {
    if (!failure) {
        return std::make_unique<VirtualEventListener>(desktop, std::move(delivery));
    }
    if (*failure) {
        std::rethrow_exception(*failure);
    }
    return nullptr;
}

}  // namespace

std::optional<CGEvent> VirtualEvents::create() {
    return desktop_->withState([](VirtualDesktopState& state) -> std::optional<CGEvent> {
        if (!state.scene.pointer) {
            return std::nullopt;
        }
        CGEvent event = state.input.state();
        event.location = *state.scene.pointer;
        return event;
    });
}

std::unique_ptr<CGEventListener> VirtualEvents::tapCreate(CGEventMask eventsOfInterest, CGEventHandler handler) {
    const auto failure = desktop_->withState([](VirtualDesktopState& state) { return state.input.tapFailure; });
    return listen(*desktop_, failure, std::make_shared<Delivery>(Kind::tap, eventsOfInterest, std::move(handler)));
}

std::unique_ptr<CGEventListener> VirtualEventMonitors::addGlobalMonitor(NSEventMask mask, CGEventHandler handler) {
    const auto failure = desktop_->withState([](VirtualDesktopState& state) { return state.input.monitorFailure; });
    return listen(*desktop_, failure, std::make_shared<Delivery>(Kind::monitor, mask, std::move(handler)));
}

std::unique_ptr<CGEventListener> VirtualEventMonitors::addLocalMonitor(NSEventMask, CGEventHandler) {
    return std::make_unique<DeafListener>();
}

}  // namespace zorvane
