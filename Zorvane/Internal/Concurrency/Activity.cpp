#include "Zorvane/Internal/Concurrency/Activity.hpp"

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace zorvane {

namespace {

// Never destroyed: jobs may still end while the process exits.
struct Counter {
    std::atomic<std::int64_t> inFlight = 0;
    std::atomic<int> waiters = 0;
    std::mutex mutex;
    std::condition_variable idle;
};

Counter& counter() {
    static auto& counter = *new Counter;
    return counter;
}

}  // namespace

Activity::Activity() noexcept {
    ++counter().inFlight;
}

Activity::~Activity() {
    Counter& count = counter();
    // A waiter announces itself before it reads the count, and the count falls before the waiters are read: one of the
    // two sees the other.
    if (--count.inFlight == 0 && count.waiters > 0) {
        std::lock_guard lock(count.mutex);
        count.idle.notify_all();
    }
}

void Activity::waitUntilIdle() {
    Counter& count = counter();
    std::unique_lock lock(count.mutex);
    ++count.waiters;
    count.idle.wait(lock, [&count] { return count.inFlight == 0; });
    --count.waiters;
}

}  // namespace zorvane
