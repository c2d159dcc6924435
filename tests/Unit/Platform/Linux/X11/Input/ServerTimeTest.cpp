#include "Zorvane/Platform/Linux/X11/Input/ServerTime.hpp"

#include <gtest/gtest.h>

namespace zorvane {
namespace {

using namespace std::chrono_literals;
using std::chrono::nanoseconds;

constexpr nanoseconds longAfter = 24h * 365 * 10;

TEST(ServerTimeTest, TheHostsOwnClockNeedsNoOffsetHoweverLongTheAnswerTook) {
    ServerTime quick(5'000, 5'000'700us, 5'000'900us);
    EXPECT_EQ(quick.hostTime(6'000, longAfter), 6'000'500us);
    ServerTime slow(5'000, 4'000ms, 9'000ms);
    EXPECT_EQ(slow.hostTime(6'000, longAfter), 6'000'500us);
    ServerTime coarse(4'997, 5'000'700us, 5'000'900us);  // a clock that the kernel's ticks move
    EXPECT_EQ(coarse.hostTime(6'000, longAfter), 6'000'500us);
}

TEST(ServerTimeTest, AnotherClockIsSetByTheMiddleOfTheAnswersTime) {
    ServerTime time(80'000, 5'000ms, 5'020ms);
    EXPECT_EQ(time.hostTime(80'100, longAfter), 5'110ms);
}

TEST(ServerTimeTest, ThirtyTwoBitsMayWrapBeforeTheComparisonAndAfterIt) {
    constexpr std::uint32_t last = 0xFFFFFFFF;
    constexpr nanoseconds wrap = 1ms * (std::int64_t{last} + 1);
    ServerTime second(300, wrap + 300ms, wrap + 301ms);
    EXPECT_EQ(second.hostTime(400, longAfter), wrap + 400'500us);
    ServerTime first(last - 10, wrap - 11ms, wrap - 10ms);
    EXPECT_EQ(first.hostTime(last, longAfter), wrap - 500us);
    EXPECT_EQ(first.hostTime(0, longAfter), wrap + 500us);
}

TEST(ServerTimeTest, TimesNeverLieInTheFutureAndNeverDecrease) {
    ServerTime time(5'000, 5'000ms, 5'001ms);
    EXPECT_EQ(time.hostTime(6'000, 6'000'200us), 6'000'200us);
    EXPECT_EQ(time.hostTime(5'990, longAfter), 6'000'200us);
    EXPECT_EQ(time.hostTime(6'010, longAfter), 6'010'500us);
}

}  // namespace
}  // namespace zorvane
