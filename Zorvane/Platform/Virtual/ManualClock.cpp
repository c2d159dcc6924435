#include "Zorvane/Platform/Virtual/ManualClock.hpp"

#include <algorithm>

#include "Zorvane/Internal/Concurrency/Activity.hpp"

namespace zorvane {

using std::chrono::nanoseconds;

HostClock::TimerID ManualClock::schedule(nanoseconds deadline, nanoseconds, std::function<void()> handler) {
    std::lock_guard lock(mutex_);
    const auto id = TimerID{++lastID_};
    const nanoseconds now = now_;
    timers_.emplace(Key{deadline > now ? deadline : now + quantum, id}, std::move(handler));
    changed_.notify_all();
    return id;
}

bool ManualClock::cancel(TimerID id) {
    std::function<void()> dropped;  // destroyed after the lock is released
    std::lock_guard lock(mutex_);
    const auto timer =
        std::find_if(timers_.begin(), timers_.end(), [id](auto& entry) { return entry.first.second == id; });
    if (timer == timers_.end()) {
        return false;
    }
    dropped = std::move(timer->second);
    timers_.erase(timer);
    return true;
}

void ManualClock::advance(nanoseconds duration) {
    const nanoseconds target = now() + duration;
    Activity::waitUntilIdle();
    while (auto handler = takeNext(target)) {
        handler();
        Activity::waitUntilIdle();
    }
    now_ = target;
}

bool ManualClock::advanceToNextTimer() {
    Activity::waitUntilIdle();
    auto handler = takeNext(nanoseconds::max());
    if (!handler) {
        return false;
    }
    handler();
    Activity::waitUntilIdle();
    return true;
}

std::size_t ManualClock::pendingTimers() const {
    std::lock_guard lock(mutex_);
    return timers_.size();
}

void ManualClock::markEnded(bool& ended) {
    std::lock_guard lock(mutex_);
    ended = true;
    changed_.notify_all();
}

void ManualClock::advanceUntil(const bool& ended) {
    while (true) {
        Activity::waitUntilIdle();
        std::unique_lock lock(mutex_);
        if (ended) {
            return;
        }
        if (timers_.empty()) {
            changed_.wait(lock, [this, &ended] { return ended || !timers_.empty(); });
            continue;  // whoever set the timer may have more work in flight
        }
        lock.unlock();
        if (auto handler = takeNext(nanoseconds::max())) {
            handler();
        }
    }
}

std::function<void()> ManualClock::takeNext(nanoseconds limit) {
    std::lock_guard lock(mutex_);
    const auto first = timers_.begin();
    if (first == timers_.end() || first->first.first > limit) {
        return nullptr;
    }
    now_ = first->first.first;
    auto handler = std::move(first->second);
    timers_.erase(first);
    return handler;
}

}  // namespace zorvane
