#include "Zorvane/Internal/Concurrency/MonotonicClock.hpp"

#include <algorithm>
#include <asio/io_context.hpp>
#include <asio/post.hpp>
#include <asio/steady_timer.hpp>
#include <map>
#include <thread>
#include <unordered_map>
#include <utility>
#include <vector>

#include "Zorvane/Internal/Concurrency/ThreadName.hpp"
#include "Zorvane/Internal/Concurrency/ThreadSafety.hpp"

namespace zorvane {

using std::chrono::nanoseconds;

class MonotonicClock::Timers {
  public:
    Timers() {
        std::thread([this] {
            setCurrentThreadName("zv.clock");
            context_.run();
        }).detach();
    }

    TimerID schedule(nanoseconds deadline, nanoseconds tolerance, std::function<void()> handler) {
        MutexLock lock(mutex_);
        const auto id = TimerID{++lastID_};
        const nanoseconds latest = deadline + std::max(tolerance, nanoseconds::zero());
        latest_.emplace(id, latest);
        timers_.emplace(Key{latest, id}, Timer{deadline, std::move(handler)});
        if (latest < wakeUp_) {
            wakeUp_ = latest;
            asio::post(context_, [this] { sleepUntilWakeUp(); });
        }
        return id;
    }

    bool cancel(TimerID id) {
        std::function<void()> dropped;  // destroyed after the lock is released
        MutexLock lock(mutex_);
        const auto latest = latest_.find(id);
        if (latest == latest_.end()) {
            return false;
        }
        const auto timer = timers_.find(Key{latest->second, id});
        dropped = std::move(timer->second.handler);
        timers_.erase(timer);
        latest_.erase(latest);
        return true;
    }

  private:
    struct Timer {
        nanoseconds deadline;
        std::function<void()> handler;
    };
    using Key = std::pair<nanoseconds, TimerID>;

    static constexpr nanoseconds never = nanoseconds::max();

    void sleepUntilWakeUp() {
        nanoseconds wakeUp;
        {
            MutexLock lock(mutex_);
            wakeUp = wakeUp_;
        }
        if (wakeUp == never) {
            return;
        }
        alarm_.expires_at(std::chrono::steady_clock::time_point(wakeUp));
        alarm_.async_wait([this](const std::error_code& error) {
            if (!error) {
                fireDueTimers();
            }
        });
    }

    void fireDueTimers() {
        for (Timer& timer : takeDueTimers(std::chrono::steady_clock::now().time_since_epoch())) {
            timer.handler();
        }
        sleepUntilWakeUp();
    }

    std::vector<Timer> takeDueTimers(nanoseconds now) {
        std::vector<Timer> due;
        MutexLock lock(mutex_);
        for (auto entry = timers_.begin(); entry != timers_.end();) {
            if (entry->second.deadline > now) {
                ++entry;
                continue;
            }
            latest_.erase(entry->first.second);
            due.push_back(std::move(entry->second));
            entry = timers_.erase(entry);
        }
        wakeUp_ = timers_.empty() ? never : timers_.begin()->first.first;
        std::stable_sort(due.begin(), due.end(),
                         [](const Timer& a, const Timer& b) { return a.deadline < b.deadline; });
        return due;
    }

    asio::io_context context_{1};
    asio::executor_work_guard<asio::io_context::executor_type> work_{context_.get_executor()};
    asio::steady_timer alarm_{context_};  // belongs to the clock's thread

    Mutex mutex_;
    std::uint64_t lastID_ ZV_GUARDED_BY(mutex_) = 0;
    std::map<Key, Timer> timers_ ZV_GUARDED_BY(mutex_);  // by the latest time to fire
    std::unordered_map<TimerID, nanoseconds> latest_ ZV_GUARDED_BY(mutex_);
    nanoseconds wakeUp_ ZV_GUARDED_BY(mutex_) = never;
};

MonotonicClock::MonotonicClock() : timers_(std::make_unique<Timers>()) {}

MonotonicClock::~MonotonicClock() = default;

std::shared_ptr<MonotonicClock> MonotonicClock::shared() {
    // Never destroyed: its thread runs until the process has ended.
    static auto& clock = *new MonotonicClock;
    return {std::shared_ptr<void>(), &clock};
}

nanoseconds MonotonicClock::now() const {
    return std::chrono::steady_clock::now().time_since_epoch();
}

HostClock::TimerID MonotonicClock::schedule(nanoseconds deadline, nanoseconds tolerance,
                                            std::function<void()> handler) {
    return timers_->schedule(deadline, tolerance, std::move(handler));
}

bool MonotonicClock::cancel(TimerID timer) {
    return timers_->cancel(timer);
}

}  // namespace zorvane
