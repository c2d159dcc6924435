// A host clock that stands still until it is told to go on, and then jumps from event to event.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <utility>

#include "Zorvane/Internal/Concurrency/Task.hpp"
#include "Zorvane/Platform/Foundation/HostClock.hpp"

namespace zorvane {

/// Simulated time: seconds of it pass in microseconds, and a run with the same events goes the same way each time.
///
/// Time moves only inside `advance`, `advanceToNextTimer` and `complete`, which fire the timers in the order of their
/// deadlines, on the calling thread, and before each one let all work in flight come to rest (`Activity`). They are
/// called by one thread at a time, never by a job. A timer whose deadline has passed already is put one `quantum`
/// ahead, so that a loop of empty sleeps moves with time instead of holding it up.
class ManualClock final : public HostClock {
  public:
    static constexpr std::chrono::nanoseconds quantum = std::chrono::milliseconds(1);

    explicit ManualClock(std::chrono::nanoseconds start = std::chrono::seconds(1000)) : now_(start) {}

    std::chrono::nanoseconds now() const override { return now_; }
    TimerID schedule(std::chrono::nanoseconds deadline, std::chrono::nanoseconds tolerance,
                     std::function<void()> handler) override;
    bool cancel(TimerID timer) override;

    /// Moves time on by `duration` and returns when all work that this set off has come to rest.
    void advance(std::chrono::nanoseconds duration);

    /// Moves time to the next timer and fires it; false, without moving, if there is none.
    bool advanceToNextTimer();

    /// The number of timers that have not fired.
    std::size_t pendingTimers() const;

    /// Starts `task` and moves time on, as far as it takes, until the task has ended; gives its value or throws what it
    /// threw. Waits in real time while there is neither work in flight nor a timer.
    template <class T>
    T complete(Task<T> task) {
        std::optional<ZVOutcome<T>> result;
        bool ended = false;
        auto completion = [this, &result, &ended](ZVOutcome<T> outcome) {
            result.emplace(std::move(outcome));
            markEnded(ended);
        };
        detail::rootTask(std::move(task), std::move(completion)).start({});
        advanceUntil(ended);
        return std::move(*result).value();
    }

  private:
    using Key = std::pair<std::chrono::nanoseconds, TimerID>;

    void markEnded(bool& ended);
    void advanceUntil(const bool& ended);
    /// Moves time to the first timer not after `limit`, and takes it.
    std::function<void()> takeNext(std::chrono::nanoseconds limit);

    std::atomic<std::chrono::nanoseconds> now_;
    mutable std::mutex mutex_;  // guards all below, and `ended` of the running `complete`
    std::condition_variable changed_;
    std::uint64_t lastID_ = 0;
    std::map<Key, std::function<void()>> timers_;  // in the order in which they fire
};

}  // namespace zorvane
