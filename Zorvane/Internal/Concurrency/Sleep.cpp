#include "Zorvane/Internal/Concurrency/Sleep.hpp"

#include "Zorvane/Internal/Concurrency/Continuation.hpp"
#include "Zorvane/Platform/Platform.hpp"

namespace zorvane {

namespace {

class ScheduledTimer {
  public:
    ScheduledTimer(std::shared_ptr<HostClock> clock, HostClock::TimerID id) : clock_(std::move(clock)), id_(id) {}
    ScheduledTimer(const ScheduledTimer&) = delete;
    ScheduledTimer& operator=(const ScheduledTimer&) = delete;
    ~ScheduledTimer() { clock_->cancel(id_); }

  private:
    std::shared_ptr<HostClock> clock_;
    HostClock::TimerID id_;
};

}  // namespace

Task<> sleepFor(std::chrono::nanoseconds duration, std::chrono::nanoseconds tolerance) {
    auto clock = Platform::current()->clock;
    auto [continuation, waiter] = makeContinuation();
    auto wakeUp = [continuation = std::move(continuation)] { continuation.resume(); };
    const auto id = clock->schedule(clock->now() + duration, tolerance, std::move(wakeUp));
    ScheduledTimer timer(std::move(clock), id);
    co_await std::move(waiter);
}

}  // namespace zorvane
