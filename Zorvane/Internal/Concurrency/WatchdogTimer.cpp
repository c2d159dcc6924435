#include "Zorvane/Internal/Concurrency/WatchdogTimer.hpp"

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

#include "Zorvane/Internal/Concurrency/Executor.hpp"
#include "Zorvane/Platform/Platform.hpp"

namespace zorvane {

using std::chrono::nanoseconds;

class WatchdogTimer::State : public std::enable_shared_from_this<State> {
  public:
    State(std::function<void()> handler, std::shared_ptr<HostClock> clock)
        : handler_(std::move(handler)), clock_(std::move(clock)) {}

    void arm(nanoseconds duration, nanoseconds tolerance) {
        const nanoseconds deadline = clock_->now() + duration;
        std::lock_guard lock(mutex_);
        ++arming_;
        deadline_ = deadline;
        tolerance_ = tolerance;
        if (!sleep_ || sleep_->until > deadline + tolerance) {
            cancelSleep();
            sleepUntilDeadline();
        }
    }

    void disarm() {
        std::lock_guard lock(mutex_);
        ++arming_;
        deadline_.reset();
    }

    void disarmAndWait() {
        disarm();
        PoolBlockingScope blocking;
        std::unique_lock lock(mutex_);
        handlerEnded_.wait(lock, [this] { return !handlerThread_ || *handlerThread_ == std::this_thread::get_id(); });
    }

    void close() {
        disarmAndWait();
        std::lock_guard lock(mutex_);
        cancelSleep();
    }

  private:
    struct Sleep {
        nanoseconds until;
        HostClock::TimerID timer;
    };

    void cancelSleep() {
        if (sleep_) {
            clock_->cancel(sleep_->timer);
            sleep_.reset();
            ++sleepNumber_;
        }
    }

    void sleepUntilDeadline() {
        auto wakeUp = [weak = weak_from_this(), number = sleepNumber_] {
            if (auto state = weak.lock()) {
                state->wakeUp(number);
            }
        };
        sleep_ = {*deadline_, clock_->schedule(*deadline_, tolerance_, std::move(wakeUp))};
    }

    void wakeUp(std::uint64_t number) {
        std::lock_guard lock(mutex_);
        if (number != sleepNumber_) {
            return;  // cancelled too late
        }
        sleep_.reset();
        ++sleepNumber_;
        if (!deadline_) {
            return;
        }
        if (clock_->now() < *deadline_) {
            sleepUntilDeadline();
            return;
        }
        deadline_.reset();
        strand_->post([state = shared_from_this(), arming = arming_] { state->runHandler(arming); });
    }

    void runHandler(std::uint64_t arming) {
        std::unique_lock lock(mutex_);
        if (arming != arming_) {
            return;
        }
        handlerThread_ = std::this_thread::get_id();
        lock.unlock();
        handler_();
        lock.lock();
        handlerThread_.reset();
        handlerEnded_.notify_all();
    }

    const std::function<void()> handler_;
    const std::shared_ptr<HostClock> clock_;
    const std::shared_ptr<Executor> strand_ = Executor::makeStrand("zv.watchdog");

    std::mutex mutex_;  // guards all below
    std::condition_variable handlerEnded_;
    std::uint64_t arming_ = 0;  // counts arm and disarm: an expiry counts only if nothing came after it
    std::optional<nanoseconds> deadline_;
    nanoseconds tolerance_{};
    std::optional<Sleep> sleep_;  // the platform timer, which may wake before the deadline but not after it
    std::uint64_t sleepNumber_ = 0;
    std::optional<std::thread::id> handlerThread_;
};

WatchdogTimer::WatchdogTimer(std::function<void()> handler)
    : WatchdogTimer(std::move(handler), Platform::current()->clock) {}

WatchdogTimer::WatchdogTimer(std::function<void()> handler, std::shared_ptr<HostClock> clock)
    : state_(std::make_shared<State>(std::move(handler), std::move(clock))) {}

WatchdogTimer::~WatchdogTimer() {
    state_->close();
}

void WatchdogTimer::arm(nanoseconds duration, nanoseconds tolerance) {
    state_->arm(duration, tolerance);
}

void WatchdogTimer::disarm() {
    state_->disarm();
}

void WatchdogTimer::disarmAndWait() {
    state_->disarmAndWait();
}

}  // namespace zorvane
