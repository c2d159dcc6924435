#include "Zorvane/Platform/Virtual/ManualClock.hpp"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "Zorvane/Internal/Concurrency/Executor.hpp"
#include "Zorvane/Internal/Concurrency/Sleep.hpp"
#include "Zorvane/Internal/Concurrency/TaskHandle.hpp"
#include "tests/Support/ManualTime.hpp"

namespace zorvane {
namespace {

using namespace std::chrono_literals;

class ManualClockTest : public testing::ManualTimeTest {};

TEST_F(ManualClockTest, FiresTimersInTheOrderOfTheirDeadlinesEachAtItsOwnTime) {
    std::vector<std::chrono::nanoseconds> times;
    const auto start = clock->now();
    auto note = [&] { times.push_back(clock->now() - start); };
    clock->schedule(start + 30ms, 0ns, note);
    clock->schedule(start + 10ms, 1h, note);
    const auto cancelled = clock->schedule(start + 15ms, 0ns, note);
    clock->schedule(start + 20ms, 0ns, [&] {
        note();
        clock->schedule(clock->now() + 5ms, 0ns, note);
    });
    EXPECT_TRUE(clock->cancel(cancelled));
    clock->advance(29ms);
    EXPECT_EQ(times, (std::vector<std::chrono::nanoseconds>{10ms, 20ms, 25ms}));
    EXPECT_EQ(clock->now() - start, 29ms);
    EXPECT_EQ(clock->pendingTimers(), 1u);
}

TEST_F(ManualClockTest, LetsTheWorkSetOffByOneTimerComeToRestBeforeTheNext) {
    std::vector<int> order;  // unguarded: the clock waits between the two
    auto chain = [&order](int name) -> Task<> {
        co_await sleepFor(10ms * name);
        for (int hop = 0; hop < 20; ++hop) {
            auto nothing = []() -> Task<> { co_return; };
            co_await nothing().on(Executor::makeStrand("hop"));
        }
        order.push_back(name);
    };
    auto first = spawn(chain(1));
    auto second = spawn(chain(2));
    clock->advance(20ms);
    EXPECT_EQ(order, (std::vector{1, 2}));
}

TEST_F(ManualClockTest, CompletesATaskAcrossItsSleeps) {
    auto body = []() -> Task<int> {
        co_await sleepFor(24h);
        co_await sleepFor(24h);
        co_return 2;
    };
    const auto start = clock->now();
    EXPECT_EQ(clock->complete(body()), 2);
    EXPECT_EQ(clock->now() - start, 48h);
}

TEST_F(ManualClockTest, CompletesATaskThatAnotherThreadResumes) {
    auto pair = makeContinuation<int>();
    auto body = [](Waiter<int> waiter) -> Task<int> {
        const int value = co_await std::move(waiter);
        co_await sleepFor(1s);
        co_return value;
    };
    std::jthread outside([continuation = std::move(pair.first)] { continuation.resume(3); });
    EXPECT_EQ(clock->complete(body(std::move(pair.second))), 3);
}

TEST_F(ManualClockTest, AdvancesToTheNextTimerOnly) {
    EXPECT_FALSE(clock->advanceToNextTimer());
    const auto start = clock->now();
    clock->schedule(start + 2s, 0ns, [] {});
    clock->schedule(start + 3s, 0ns, [] {});
    EXPECT_TRUE(clock->advanceToNextTimer());
    EXPECT_EQ(clock->now() - start, 2s);
}

}  // namespace
}  // namespace zorvane
