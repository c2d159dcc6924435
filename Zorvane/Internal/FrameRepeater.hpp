// Shows the last frame of a stream again when no other has come for a while.
#pragma once

#include <chrono>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

#include "Zorvane/Internal/Concurrency/DispatchQueue.hpp"
#include "Zorvane/Internal/Concurrency/WatchdogTimer.hpp"
#include "Zorvane/Internal/FrameRepeaterTiming.hpp"
#include "Zorvane/Platform/CoreMedia/CMTime.hpp"
#include "Zorvane/Platform/Platform.hpp"

namespace zorvane {

class FrameRepeaterError final : public std::exception {
  public:
    /// A frame came, and there is no handler to take it.
    static FrameRepeaterError handlerNotSet() { return {}; }

    const char* what() const noexcept override { return "handlerNotSet"; }

  private:
    FrameRepeaterError() = default;
};

/// Hands on every frame, and when none has come for an interval the last one again, at its time plus what has passed.
/// So a picture that stands still goes on about once per interval. The times it hands on rise strictly: a frame that
/// isn't later than the last time handed on is moved to one tick after it; a repeat that isn't is left out.
///
///     idle --append--> armed (--interval passes: repeat--> armed)* --cancel--> idle
///
/// Runs on the clock of the platform that is current when it is made. Any thread. A frame costs no allocation and no
/// system call.
template <class T>
class FrameRepeater {
  public:
    /// Gets a frame. `addedTime` is absent for a frame of the source; for a repeat it is what has been added so far to
    /// that frame's time. One call at a time, on the thread of `append` or, for a repeat, of the pool. It must not
    /// call `append` of this repeater. For a repeat it must not throw.
    using Handler = std::function<void(const T& item, CMTime time, std::optional<CMTime> addedTime)>;

    /// `interval` in seconds, cut to whole milliseconds.
    explicit FrameRepeater(double interval) : state_(std::make_shared<State>(FrameRepeaterTiming(interval))) {
        state_->makeTimer();
    }
    FrameRepeater(const FrameRepeater&) = delete;
    FrameRepeater& operator=(const FrameRepeater&) = delete;

    /// Waits for a repeat that is being handled, unless called inside it: after it the handler isn't called any more.
    /// Must not be called with a lock that the handler needs.
    ~FrameRepeater() { state_->timer->disarmAndWait(); }

    /// Where the frames go. To be set before the first frame.
    void setHandler(Handler handler) { state_->handler = std::move(handler); }

    /// Hands on a frame of the source and awaits the next. Throws `FrameRepeaterError` if there is no handler.
    void append(T item, CMTime time) { state_->append(std::move(item), time); }

    /// No repeat comes any more until the next frame. Returns at once: a repeat under way may still be handled.
    void cancel() {
        state_->queue.asyncBarrier([weak = std::weak_ptr(state_)] {
            if (auto state = weak.lock()) {
                state->timer->disarm();
                state->shown.reset();
            }
        });
    }

  private:
    struct Shown {
        T item;
        CMTime time;
        std::optional<CMTime> addedTime;
        std::chrono::nanoseconds armedAt;
    };

    struct State : std::enable_shared_from_this<State> {
        explicit State(FrameRepeaterTiming repeaterTiming) : timing(repeaterTiming) {}

        // A repeat keeps the state alive while it runs, so that the repeater may go inside the handler.
        void makeTimer() {
            auto repeat = [weak = this->weak_from_this()] {
                if (auto state = weak.lock()) {
                    state->repeat();
                }
            };
            timer.emplace(std::move(repeat), clock);
        }

        void append(T item, CMTime time) {
            if (!handler) {
                throw FrameRepeaterError::handlerNotSet();
            }
            const std::chrono::nanoseconds now = clock->now();
            queue.preconditionNotOnQueue();
            queue.syncBarrier([&] { show({std::move(item), time, std::nullopt, now}); });
        }

        void repeat() {
            queue.syncBarrier([this] {
                const std::chrono::nanoseconds now = clock->now();
                // A cancel, or a frame that has armed the timer anew, may have come first.
                if (!shown || now - shown->armedAt < timing.sleepInterval()) {
                    return;
                }
                const CMTime elapsed = FrameRepeaterTiming::elapsed(shown->armedAt, now);
                show({std::move(shown->item), shown->time + elapsed, shown->addedTime.value_or(kCMTimeZero) + elapsed,
                      now});
            });
        }

        void show(Shown next) {
            shown = std::move(next);
            timer->arm(timing.sleepInterval(), timing.sleepIntervalTolerance());
            if (const auto time = timing.nextTime(shown->time, shown->addedTime)) {
                handler(shown->item, *time, shown->addedTime);
            }
        }

        Handler handler;
        const DispatchQueue queue = DispatchQueue::serial("FrameRepeater");
        const std::shared_ptr<HostClock> clock = Platform::current()->clock;
        std::optional<WatchdogTimer> timer;
        FrameRepeaterTiming timing;  // its last time is guarded by queue
        std::optional<Shown> shown;  // guarded by queue; present while armed
    };

    const std::shared_ptr<State> state_;
};

}  // namespace zorvane
