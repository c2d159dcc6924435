#include "Zorvane/Internal/Concurrency/WatchdogTimer.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <thread>

#include "tests/Support/ManualTime.hpp"

namespace zorvane {
namespace {

using namespace std::chrono_literals;

class WatchdogTimerTest : public testing::ManualTimeTest {
  protected:
    std::atomic<int> calls = 0;
};

// Counts how often the timer asks for a platform timer.
class CountingClock final : public HostClock {
  public:
    explicit CountingClock(std::shared_ptr<HostClock> clock) : clock_(std::move(clock)) {}

    std::chrono::nanoseconds now() const override { return clock_->now(); }
    TimerID schedule(std::chrono::nanoseconds deadline, std::chrono::nanoseconds tolerance,
                     std::function<void()> handler) override {
        ++scheduled;
        return clock_->schedule(deadline, tolerance, std::move(handler));
    }
    bool cancel(TimerID timer) override { return clock_->cancel(timer); }

    std::atomic<int> scheduled = 0;

  private:
    std::shared_ptr<HostClock> clock_;
};

TEST_F(WatchdogTimerTest, FiresOnceAfterTheLastArming) {
    WatchdogTimer timer([this] { ++calls; });
    clock->advance(1s);
    EXPECT_EQ(calls, 0) << "not armed yet";

    timer.arm(100ms, 10ms);
    for (int i = 0; i < 10; ++i) {
        clock->advance(90ms);
        timer.arm(100ms, 10ms);
    }
    EXPECT_EQ(calls, 0);
    clock->advance(99ms);
    EXPECT_EQ(calls, 0);
    clock->advance(1ms);
    EXPECT_EQ(calls, 1);
    clock->advance(1s);
    EXPECT_EQ(calls, 1) << "quiet until it is armed again";

    timer.arm(100ms, 10ms);
    clock->advance(100ms);
    EXPECT_EQ(calls, 2);
}

TEST_F(WatchdogTimerTest, RearmingMovesTheDeadlineWithoutAnotherPlatformTimer) {
    auto counting = std::make_shared<CountingClock>(clock);
    WatchdogTimer timer([this] { ++calls; }, counting);
    for (int i = 0; i < 1000; ++i) {
        timer.arm(100ms, 0ms);
    }
    EXPECT_EQ(counting->scheduled, 1);
    clock->advance(50ms);
    timer.arm(100ms, 0ms);
    clock->advance(50ms);
    EXPECT_EQ(counting->scheduled, 2) << "woke early and went back to sleep";
    EXPECT_EQ(calls, 0);
    clock->advance(50ms);
    EXPECT_EQ(calls, 1);
}

TEST_F(WatchdogTimerTest, AnEarlierDeadlineTakesThePlaceOfALaterOne) {
    WatchdogTimer timer([this] { ++calls; });
    timer.arm(10s, 0ms);
    timer.arm(1s, 0ms);
    clock->advance(1s);
    EXPECT_EQ(calls, 1);
    clock->advance(10s);
    EXPECT_EQ(calls, 1);
}

TEST_F(WatchdogTimerTest, DisarmedOrDestroyedItNeverFires) {
    {
        WatchdogTimer timer([this] { ++calls; });
        timer.arm(100ms, 0ms);
        timer.disarm();
        clock->advance(1s);
        timer.arm(100ms, 0ms);
    }
    clock->advance(1s);
    EXPECT_EQ(calls, 0);
    EXPECT_EQ(clock->pendingTimers(), 0u);
}

TEST_F(WatchdogTimerTest, MayBeArmedAndDisarmedInsideItsHandler) {
    WatchdogTimer* self = nullptr;
    WatchdogTimer timer([&] {
        if (++calls < 3) {
            self->arm(100ms, 0ms);
        } else {
            self->disarmAndWait();
        }
    });
    self = &timer;
    timer.arm(100ms, 0ms);
    clock->advance(1s);
    EXPECT_EQ(calls, 3);
}

TEST_F(WatchdogTimerTest, DestructionWaitsForARunningHandler) {
    std::latch running(1);
    std::atomic<bool> ended = false;
    auto timer = std::make_unique<WatchdogTimer>([&] {
        running.count_down();
        for (int i = 0; i < 1000; ++i) {
            std::this_thread::yield();
        }
        ended = true;
    });
    timer->arm(1ms, 0ms);
    std::jthread time([this] { clock->advance(1ms); });
    running.wait();
    timer.reset();
    EXPECT_TRUE(ended);
}

TEST_F(WatchdogTimerTest, ArmingRacingWithExpiryAndDestructionIsSafe) {
    auto monotonic = std::make_shared<CountingClock>(clock);
    for (int round = 0; round < 200; ++round) {
        std::atomic<bool> alive = true;
        WatchdogTimer timer([&alive] { EXPECT_TRUE(alive); }, monotonic);
        timer.arm(1us, 0ms);
        std::jthread arming([&timer] {
            for (int i = 0; i < 20; ++i) {
                timer.arm(1us, 0ms);
            }
        });
        clock->advance(1ms);
        arming.join();
        timer.disarmAndWait();
        alive = false;
    }
}

}  // namespace
}  // namespace zorvane
