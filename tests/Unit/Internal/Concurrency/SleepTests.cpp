#include "Zorvane/Internal/Concurrency/Sleep.hpp"

#include <gtest/gtest.h>

#include "Zorvane/Internal/Concurrency/TaskHandle.hpp"
#include "tests/Support/ManualTime.hpp"

namespace zorvane {
namespace {

using namespace std::chrono_literals;

class SleepTest : public testing::ManualTimeTest {};

TEST_F(SleepTest, EndsAtItsTimeAndNotBefore) {
    bool awake = false;
    auto body = [&awake]() -> Task<> {
        co_await sleepFor(4100ms);
        awake = true;
    };
    auto sleeping = spawn(body());
    clock->advance(4099ms);
    EXPECT_FALSE(awake);
    clock->advance(1ms);
    EXPECT_TRUE(awake);
}

TEST_F(SleepTest, CancelledThrowsAtOnceAndLeavesNoTimerBehind) {
    auto sleeping = spawn(sleepFor(1h));
    clock->advance(1s);
    EXPECT_EQ(clock->pendingTimers(), 1u);
    sleeping.cancel();
    EXPECT_THROW(sleeping.value().get(), ZVCancelled);
    EXPECT_EQ(clock->pendingTimers(), 0u);
}

TEST_F(SleepTest, AnEmptySleepLetsOtherWorkGoFirstAndDoesNotHoldUpTime) {
    auto busy = []() -> Task<> {
        while (true) {
            co_await sleepFor(0ns, 0ns);
        }
    };
    auto polling = spawn(busy());
    clock->advance(1s);
    polling.cancel();
    EXPECT_THROW(polling.value().get(), ZVCancelled);
}

}  // namespace
}  // namespace zorvane
