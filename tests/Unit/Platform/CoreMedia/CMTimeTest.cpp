#include "Zorvane/Platform/CoreMedia/CMTime.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

namespace zorvane {

void PrintTo(const CMTime& time, std::ostream* stream) {
    *stream << time.logDescription();
}

namespace {

constexpr std::int64_t maxValue = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t minValue = std::numeric_limits<std::int64_t>::min();
constexpr std::int32_t maxTimescale = std::numeric_limits<std::int32_t>::max();
constexpr double infinity = std::numeric_limits<double>::infinity();

bool isRounded(const CMTime& time) {
    return time.flags.contains(CMTimeFlags::hasBeenRounded);
}

void expectExactly(const CMTime& time, std::int64_t value, std::int32_t timescale) {
    EXPECT_EQ(time.value, value);
    EXPECT_EQ(time.timescale, timescale);
}

TEST(CMTime, IsUsableInConstantExpressions) {
    static_assert(CMTime::make(1, 2) + CMTime::make(1, 3) == CMTime::make(5, 6));
    static_assert(CMTime::fromSeconds(0.5, 600) == CMTime::make(300, 600));
    static_assert(CMTime::make(3, 2).seconds() == 1.5);
}

TEST(CMTime, RefusesATimescaleThatIsNotPositive) {
    EXPECT_FALSE(CMTime::make(1, 0).isValid());
    EXPECT_FALSE(CMTime::make(1, -600).isValid());
    EXPECT_FALSE(CMTime::fromSeconds(1, 0).isValid());
    EXPECT_FALSE(CMTime{}.isValid());
}

TEST(CMTime, OrdersTheKindsOfTimes) {
    const std::vector<CMTime> ascending{
        kCMTimeNegativeInfinity, CMTime::make(minValue, 1), CMTime::make(-1, 1), kCMTimeZero,
        CMTime::make(1, 1),      CMTime::make(maxValue, 1), kCMTimeIndefinite,   kCMTimePositiveInfinity,
        kCMTimeInvalid};
    for (std::size_t left = 0; left < ascending.size(); ++left) {
        for (std::size_t right = 0; right < ascending.size(); ++right) {
            const auto& a = ascending[left];
            const auto& b = ascending[right];
            EXPECT_EQ(a < b, left < right) << testing::PrintToString(a) << " " << testing::PrintToString(b);
            EXPECT_EQ(a == b, left == right) << testing::PrintToString(a) << " " << testing::PrintToString(b);
            EXPECT_EQ(a >= b, left >= right) << testing::PrintToString(a) << " " << testing::PrintToString(b);
        }
    }
}

TEST(CMTime, ComparesExactlyWhereProductsExceed64Bits) {
    // As doubles these are all equal.
    const auto huge = CMTime::make(maxValue, maxTimescale);
    const auto hugeLess = CMTime::make(maxValue - 1, maxTimescale);
    EXPECT_LT(hugeLess, huge);
    EXPECT_LT(huge, CMTime::make(maxValue, maxTimescale - 1));
    EXPECT_LT(CMTime::make(minValue, maxTimescale - 1), CMTime::make(minValue, maxTimescale));
    EXPECT_EQ(CMTime::make(1, 2), CMTime::make(1'000'000'000, 2'000'000'000));
    EXPECT_LT(CMTime::make(1, 3), CMTime::make(715'827'883, maxTimescale));
}

TEST(CMTime, ComparesEpochsBeforeValues) {
    const CMTime early = CMTime::make(100, 1);
    CMTime late = CMTime::make(1, 1);
    late.epoch = 1;
    EXPECT_LT(early, late);
}

TEST(CMTime, AddsInTheSmallestCommonTimescale) {
    const auto sum = CMTime::make(1, 48000) + CMTime::make(1, 44100);
    expectExactly(sum, 147 + 160, 7'056'000);
    EXPECT_FALSE(isRounded(sum));

    expectExactly(CMTime::make(1, 600) - CMTime::make(3, 600), -2, 600);
    expectExactly(CMTime::make(1, 1'000'000'000) + CMTime::make(1, 1000), 1'000'001, 1'000'000'000);
}

TEST(CMTime, RoundsAndFlagsASumWhoseTimescaleExceeds32Bits) {
    const auto sum = CMTime::make(1, maxTimescale) + CMTime::make(1, maxTimescale - 1);
    EXPECT_EQ(sum.timescale, maxTimescale);
    EXPECT_EQ(sum.value, 2);
    EXPECT_TRUE(isRounded(sum));
    EXPECT_TRUE(isRounded(sum + CMTime::make(1, maxTimescale))) << "the flag stays with what is computed from it";

    // Host time plus a sample of sound, whose common timescale is 3e9.
    const auto joined = CMTime::fromSeconds(86'400, 1'000'000'000) + CMTime::make(1, 48'000);
    EXPECT_TRUE(isRounded(joined));
    EXPECT_NEAR(static_cast<double>(joined.value - std::int64_t{86'400} * maxTimescale) / maxTimescale, 1.0 / 48'000,
                0.5 / maxTimescale);

    // The common timescale is too large, but the sum happens to be exact in the largest one.
    const auto exact = CMTime::make(0, maxTimescale - 1) + CMTime::make(5, maxTimescale);
    EXPECT_FALSE(isRounded(exact));
    EXPECT_EQ(exact, CMTime::make(5, maxTimescale));
}

TEST(CMTime, CoarsensTheTimescaleWhenAValueOverflows) {
    const auto sum = CMTime::make(maxValue, 600) + CMTime::make(maxValue, 600);
    EXPECT_EQ(sum.timescale, 300);
    EXPECT_EQ(sum.value, maxValue);
    EXPECT_FALSE(isRounded(sum)) << "2 * max / 600 is max / 300";
    EXPECT_TRUE(isRounded(sum + CMTime::make(1, 600)));
}

TEST(CMTime, OverflowsToTheInfinities) {
    EXPECT_EQ(CMTime::make(maxValue, 1) + CMTime::make(1, 1), kCMTimePositiveInfinity);
    EXPECT_EQ(CMTime::make(minValue, 1) - CMTime::make(1, 1), kCMTimeNegativeInfinity);
    EXPECT_EQ(CMTime::make(0, 1) - CMTime::make(minValue, 1), kCMTimePositiveInfinity);
    EXPECT_EQ(CMTime::make(-1, 1) - CMTime::make(minValue, 1), CMTime::make(maxValue, 1));
}

TEST(CMTime, AddsTheTimesThatAreNotNumbers) {
    const auto one = CMTime::make(1, 1);
    EXPECT_EQ(one + kCMTimePositiveInfinity, kCMTimePositiveInfinity);
    EXPECT_EQ(one - kCMTimePositiveInfinity, kCMTimeNegativeInfinity);
    EXPECT_EQ(kCMTimePositiveInfinity - kCMTimeNegativeInfinity, kCMTimePositiveInfinity);
    EXPECT_EQ(kCMTimePositiveInfinity - kCMTimePositiveInfinity, kCMTimeIndefinite);
    EXPECT_EQ(kCMTimePositiveInfinity + kCMTimeIndefinite, kCMTimeIndefinite);
    EXPECT_EQ(kCMTimePositiveInfinity + kCMTimeInvalid, kCMTimeInvalid);
    // Made by hand, and still no division by zero.
    const CMTime broken{1, 0, {CMTimeFlags::valid}, 0};
    EXPECT_FALSE((one + broken).isNumeric());
}

TEST(CMTime, KeepsEpochsApart) {
    CMTime first = CMTime::make(5, 1);
    first.epoch = 1;
    CMTime second = CMTime::make(3, 1);
    second.epoch = 2;
    EXPECT_FALSE((first + second).isValid());
    EXPECT_EQ((first + CMTime::make(1, 1)).epoch, 1);
    EXPECT_EQ((CMTime::make(1, 1) + first).epoch, 1);
    EXPECT_EQ((first - first).epoch, 0) << "a span has no epoch";
}

TEST(CMTime, RoundsSecondsToTheNearestUnit) {
    expectExactly(CMTime::fromSeconds(1.0 / 3, 600), 200, 600);
    expectExactly(CMTime::fromSeconds(0.5, 1), 1, 1);
    expectExactly(CMTime::fromSeconds(-0.5, 1), -1, 1);
    expectExactly(CMTime::fromSeconds(0.49999999999999994, 1), 0, 1);
    EXPECT_FALSE(isRounded(CMTime::fromSeconds(2.5, 600)));
    EXPECT_TRUE(isRounded(CMTime::fromSeconds(0.1, 7)));
}

TEST(CMTime, TakesInfiniteAndHugeSeconds) {
    const auto lastFiniteTime = CMTime::make(maxValue, 1);
    EXPECT_GT(CMTime::fromSeconds(infinity, 600), lastFiniteTime);
    EXPECT_LT(CMTime::fromSeconds(-infinity, 600), CMTime::make(minValue, 1));
    EXPECT_FALSE(CMTime::fromSeconds(std::nan(""), 600).isValid());

    const auto tenMillionYears = CMTime::fromSeconds(3.2e14, 1'000'000'000);
    EXPECT_LT(tenMillionYears.timescale, 1'000'000'000);
    EXPECT_DOUBLE_EQ(tenMillionYears.seconds(), 3.2e14);
    EXPECT_EQ(CMTime::fromSeconds(1e300, 1), kCMTimePositiveInfinity);
}

TEST(CMTime, GivesBackATimeThatWentThroughSeconds) {
    // Up to the 97 days that the contract names, in the timescales that sources use, and close to ties.
    std::mt19937_64 random(20240301);
    for (const std::int32_t timescale : {600, 44'100, 48'000, 90'000, 1'000'000, 1'000'000'000}) {
        std::uniform_int_distribution<std::int64_t> values(0, std::int64_t{97} * 86'400 * timescale);
        for (int round = 0; round < 100'000; ++round) {
            const auto time = CMTime::make(values(random), timescale);
            ASSERT_EQ(CMTime::fromSeconds(time.seconds(), timescale), time) << testing::PrintToString(time);
        }
    }
}

TEST(CMTime, GivesSecondsOfTheTimesThatAreNotNumbers) {
    EXPECT_EQ(kCMTimePositiveInfinity.seconds(), infinity);
    EXPECT_EQ(kCMTimeNegativeInfinity.seconds(), -infinity);
    EXPECT_TRUE(std::isnan(kCMTimeInvalid.seconds()));
    EXPECT_TRUE(std::isnan(kCMTimeIndefinite.seconds()));
}

TEST(CMTime, DescribesItselfForLogs) {
    EXPECT_EQ(CMTimeFlags{0}.logDescription(), "<empty>");
    EXPECT_EQ(CMTimeFlags{3}.logDescription(), "valid, hasBeenRounded");
    EXPECT_EQ(CMTimeFlags{32}.logDescription(), "unknown flags:32");
    EXPECT_EQ(CMTimeFlags{0x8000'001D}.logDescription(),
              "valid, positiveInfinity, negativeInfinity, indefinite, unknown flags:2147483648");
    EXPECT_EQ(CMTime::make(3, 2).logDescription(), "CMTime(seconds:1.5 timescale:2 value:3 flags:valid)");
}

}  // namespace
}  // namespace zorvane
