#include "Zorvane/Platform/FFmpeg/AudioTimeline.hpp"

#include <gtest/gtest.h>

namespace zorvane::testing {
namespace {

/// On a session that starts at 1000 s.
class AudioTimelineTest : public ::testing::Test {
  protected:
    AudioTimelineTest() { timeline.startAt(start); }

    static CMTime nanoseconds(std::int64_t fromStart) { return CMTime::make(fromStart, 1'000'000'000) + start; }

    static constexpr CMTime start = CMTime::make(1000, 1);
    AudioTimeline timeline{48000};
};

TEST_F(AudioTimelineTest, BlocksWhoseTimesAreRoundedToMillisecondsJoin) {
    for (int block = 0; block < 1000; ++block) {
        // 512 frames last 10.667 ms.
        const CMTime time = CMTime::fromSeconds(1000 + block * 512 / 48000.0, 1000);
        const AudioTimeline::Place place = timeline.place(time, 512);
        ASSERT_EQ(place.skipped, 0U) << block;
        ASSERT_EQ(place.taken, 512U) << block;
        ASSERT_FALSE(place.runBegin) << block;
    }
    EXPECT_EQ(timeline.runEnd(), 512'000);
}

TEST_F(AudioTimelineTest, LateFirstBlockAndGapsAreInTheirPlaces) {
    EXPECT_EQ(timeline.place(nanoseconds(100'000), 480).runBegin, 5);  // there is no sound that it could join
    EXPECT_EQ(timeline.runEnd(), 485);
    EXPECT_FALSE(timeline.place(nanoseconds(10'500'000), 480).runBegin);  // 0.4 ms late
    EXPECT_EQ(timeline.place(nanoseconds(30'000'000), 480).runBegin, 1440);
    EXPECT_EQ(timeline.runEnd(), 1920);
}

TEST_F(AudioTimelineTest, WhatOverlapsIsLeftOut) {
    EXPECT_EQ(timeline.place(nanoseconds(-20'000'000), 480).taken, 0U);
    AudioTimeline::Place place = timeline.place(nanoseconds(-4'000'000), 480);
    EXPECT_EQ(place.skipped, 192U);
    EXPECT_EQ(place.taken, 288U);
    place = timeline.place(nanoseconds(1'000'000), 480);  // 5 ms earlier than expected
    EXPECT_EQ(place.skipped, 240U);
    EXPECT_EQ(timeline.runEnd(), 528);
    EXPECT_EQ(timeline.place(nanoseconds(2'000'000), 48).taken, 0U);
    EXPECT_EQ(timeline.place(nanoseconds(11'000'000), 480).skipped, 0U);
}

TEST_F(AudioTimelineTest, SlowDriftIsMadeGoodBeforeItIsSeen) {
    // A source that runs 1000 ppm fast for ten minutes, and whose times show it.
    std::int64_t left = 0;
    for (std::int64_t block = 0; block < 60'000; ++block) {
        left += timeline.place(nanoseconds(block * 9'990'000), 480).skipped;
        ASSERT_LE(timeline.runEnd() - (block + 1) * 9'990'000 * 48 / 1'000'000, 49) << block;
    }
    EXPECT_NEAR(static_cast<double>(left), 28'800, 49);
}

TEST_F(AudioTimelineTest, IsExactAfterTenHoursAtAnOddRate) {
    // 44.1 kHz in blocks of 441 frames: 10 ms each, so that every true time is a whole number of nanoseconds.
    timeline.changeRate(44100);
    constexpr std::int64_t blocks = 10 * 3600 * 100;
    for (std::int64_t block = 0; block < blocks; ++block) {
        const AudioTimeline::Place place = timeline.place(nanoseconds(block * 10'000'000), 441);
        ASSERT_EQ(place.taken, 441U);
        ASSERT_FALSE(place.runBegin);
    }
    EXPECT_EQ(timeline.runEnd(), std::int64_t{10} * 3600 * 48000);
    timeline.endAt(nanoseconds(std::int64_t{36'000} * 1'000'000'000 + 20'833));
    EXPECT_EQ(timeline.endFrame(), std::int64_t{10} * 3600 * 48000 + 1);
}

TEST_F(AudioTimelineTest, RunsStayExactAcrossGapsOfHours) {
    timeline.changeRate(44100);
    timeline.place(nanoseconds(0), 441);
    const std::int64_t tenHours = std::int64_t{36'000} * 1'000'000'000;
    EXPECT_EQ(timeline.place(nanoseconds(tenHours + 20'833), 441).runBegin, std::int64_t{36'000} * 48000 + 1);
    timeline.changeRate(32000);
    EXPECT_FALSE(timeline.place(nanoseconds(tenHours + 10'020'833), 320).runBegin);
    EXPECT_EQ(timeline.runEnd(), std::int64_t{36'000} * 48000 + 1 + 960);
}

TEST_F(AudioTimelineTest, LeavesOutTimesThatAreNoNumbers) {
    for (const CMTime& time : {kCMTimeInvalid, kCMTimeIndefinite, kCMTimePositiveInfinity}) {
        EXPECT_EQ(timeline.place(time, 480).taken, 0U);
    }
    EXPECT_EQ(timeline.runEnd(), 0);
}

}  // namespace
}  // namespace zorvane::testing
