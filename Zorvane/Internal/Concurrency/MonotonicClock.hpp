// The host clock of a running machine.
#pragma once

#include <memory>

#include "Zorvane/Platform/Foundation/HostClock.hpp"

namespace zorvane {

/// `HostClock` on `CLOCK_MONOTONIC`, which stands still while the machine sleeps. Its timers run on one thread of their
/// own, named "zv.clock", that sleeps until the earliest `deadline + tolerance` and then fires all timers that are due.
class MonotonicClock final : public HostClock {
  public:
    /// The process's one instance; it is never destroyed.
    static std::shared_ptr<MonotonicClock> shared();

    std::chrono::nanoseconds now() const override;
    TimerID schedule(std::chrono::nanoseconds deadline, std::chrono::nanoseconds tolerance,
                     std::function<void()> handler) override;
    bool cancel(TimerID timer) override;

  private:
    class Timers;

    MonotonicClock();
    ~MonotonicClock() override;

    std::unique_ptr<Timers> timers_;
};

}  // namespace zorvane
