#include "Zorvane/Internal/Concurrency/MonotonicClock.hpp"

#include <gtest/gtest.h>
#include <time.h>

#include <future>
#include <mutex>
#include <vector>

namespace zorvane {
namespace {

using namespace std::chrono_literals;

TEST(MonotonicClock, ReadsTheClockThatTheSystemStampsSamplesWith) {
    auto clock = MonotonicClock::shared();
    timespec reference{};
    const auto before = clock->now();
    clock_gettime(CLOCK_MONOTONIC, &reference);
    const auto after = clock->now();
    const auto between = std::chrono::seconds(reference.tv_sec) + std::chrono::nanoseconds(reference.tv_nsec);
    EXPECT_LE(before, between);
    EXPECT_LE(between, after);
}

TEST(MonotonicClock, FiresTimersOfOneWindowTogetherInTheOrderOfTheirDeadlines) {
    auto clock = MonotonicClock::shared();
    const auto start = clock->now();
    std::vector<int> order;
    std::vector<std::chrono::nanoseconds> times;
    std::promise<void> done;
    auto note = [&](int name) {
        return [&, name] {
            order.push_back(name);  // the clock has one thread
            times.push_back(clock->now() - start);
        };
    };
    clock->schedule(start + 30ms, 0ms, note(3));
    clock->schedule(start + 20ms, 50ms, note(2));
    clock->schedule(start + 10ms, 50ms, note(1));
    clock->schedule(start + 31ms, 0ms, [&done] { done.set_value(); });
    done.get_future().wait();
    EXPECT_EQ(order, (std::vector{1, 2, 3}));
    for (const auto& time : times) {
        EXPECT_GE(time, 30ms) << "the wide windows share the wake-up of the narrow one";
    }
}

TEST(MonotonicClock, CancelledTimerNeverFiresAndAFiredOneCannotBeCancelled) {
    auto clock = MonotonicClock::shared();
    bool fired = false;
    const auto cancelled = clock->schedule(clock->now() + 5ms, 0ms, [&fired] { fired = true; });
    EXPECT_TRUE(clock->cancel(cancelled));
    EXPECT_FALSE(clock->cancel(cancelled));
    std::promise<void> done;
    const auto late = clock->schedule(clock->now() + 10ms, 0ms, [&done] { done.set_value(); });
    done.get_future().wait();
    EXPECT_FALSE(clock->cancel(late));
    EXPECT_FALSE(fired);
}

TEST(MonotonicClock, ADeadlineThatHasPassedFiresAtOnce) {
    auto clock = MonotonicClock::shared();
    std::promise<void> done;
    clock->schedule(clock->now() - 1s, 0ms, [&done] { done.set_value(); });
    done.get_future().wait();
}

}  // namespace
}  // namespace zorvane
