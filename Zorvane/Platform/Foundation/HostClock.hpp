// The host time clock: one monotonic time line for all sources, and one-shot timers on it.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>

namespace zorvane {

/// The clock that stamps every sample and that every wait sleeps on.
///
/// A time is the number of nanoseconds since an origin that stays fixed while the process lives; a duration is a
/// difference of two times. All operations may be called on any thread, also inside a timer's handler.
class HostClock {
  public:
    enum class TimerID : std::uint64_t {};

    virtual ~HostClock() = default;

    /// The current time. Never decreases. Makes no system call and takes no lock that is held for long, so that sample
    /// paths may use it.
    virtual std::chrono::nanoseconds now() const = 0;

    /// Calls `handler` once, not before `deadline` and, when the machine allows, not after `deadline + tolerance`.
    /// Timers whose windows overlap may share one wake-up: a larger tolerance saves energy.
    ///
    /// The handler runs on a thread of the clock, never inside this call, also when the deadline has passed. It must be
    /// short and must not block or throw: it hands the work to an executor. Timers that are due together fire in the
    /// order of their deadlines.
    virtual TimerID schedule(std::chrono::nanoseconds deadline, std::chrono::nanoseconds tolerance,
                             std::function<void()> handler) = 0;

    /// Takes back a timer. True: the handler has not begun and never will. False: the timer has fired, or there is no
    /// such timer; the handler may run at this moment and is not waited for.
    virtual bool cancel(TimerID timer) = 0;
};

}  // namespace zorvane
