#include "Zorvane/Platform/FFmpeg/VideoTimeline.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

namespace zorvane {
namespace {

constexpr std::int32_t nanoseconds = 1'000'000'000;

class VideoTimelineTest : public ::testing::Test {
  protected:
    /// The tick, -1 for a picture outside the session; replaced ones are counted apart.
    std::int64_t tickOf(CMTime time) {
        const auto place = timeline.place(time);
        replaced += place && place->replacesPrevious ? 1 : 0;
        return place ? place->tick : -1;
    }

    VideoTimeline timeline;
    int replaced = 0;
};

TEST_F(VideoTimelineTest, RoundsEachTimeOnceFromTheExactDifference) {
    // A start that 90 kHz can't hold: rounding both times apart would miss by a tick.
    timeline.startAt(CMTime::make(5'555, nanoseconds));
    EXPECT_EQ(tickOf(CMTime::make(5'555, nanoseconds)), 0);
    EXPECT_EQ(tickOf(CMTime::make(5'555 + 16'672'222, nanoseconds)), 1500);  // 1500.49998
    EXPECT_EQ(tickOf(CMTime::make(5'555 + 16'683'334, nanoseconds)), 1502);  // 1501.50006
}

TEST_F(VideoTimelineTest, StaysExactFarFromTheOriginAndWithOddTimescales) {
    const std::int64_t year = 365LL * 86'400;
    timeline.startAt(CMTime::make(year * nanoseconds + 1, nanoseconds));
    EXPECT_EQ(tickOf(CMTime::make(year * 44'100, 44'100)), 0);
    EXPECT_EQ(tickOf(CMTime::make((year + 3600) * 44'100 + 1, 44'100)), 3600LL * 90'000 + 2);
}

TEST_F(VideoTimelineTest, MovesPicturesThatFallOnOneTickToTheNext) {
    timeline.startAt(kCMTimeZero);
    std::vector<std::int64_t> ticks;
    for (const std::int64_t time : {0, 1'000, 2'000, 3'000, 40'000}) {
        ticks.push_back(tickOf(CMTime::make(time, nanoseconds)));
    }
    EXPECT_EQ(ticks, (std::vector<std::int64_t>{0, 1, 2, 3, 4}));
    EXPECT_EQ(tickOf(CMTime::make(1, 1)), 90'000);
}

TEST_F(VideoTimelineTest, BeginsWithTheNewestPictureNotAfterTheStart) {
    timeline.startAt(CMTime::make(10, 1));
    EXPECT_EQ(tickOf(CMTime::make(8, 1)), 0);
    EXPECT_EQ(tickOf(CMTime::make(9, 1)), 0);
    EXPECT_EQ(tickOf(CMTime::make(10, 1)), 0);
    EXPECT_EQ(replaced, 2);
    EXPECT_EQ(tickOf(CMTime::make(10'000'000'001, nanoseconds)), 1);
    EXPECT_EQ(replaced, 2);
}

TEST_F(VideoTimelineTest, ShowsALateFirstPictureFromTheStart) {
    timeline.startAt(CMTime::make(10, 1));
    EXPECT_EQ(tickOf(CMTime::make(21, 2)), 0);
    EXPECT_EQ(tickOf(CMTime::make(11, 1)), 90'000);
}

TEST_F(VideoTimelineTest, LeavesOutWhatLiesAtTheEndOrBehindIt) {
    timeline.startAt(CMTime::make(10, 1));
    EXPECT_FALSE(timeline.endTick().has_value());
    EXPECT_EQ(tickOf(CMTime::make(10, 1)), 0);
    timeline.endAt(CMTime::make(12, 1));
    EXPECT_EQ(timeline.endTick(), 180'000);
    EXPECT_EQ(tickOf(CMTime::make(12, 1)), -1);
    EXPECT_EQ(tickOf(CMTime::make(13, 1)), -1);
    // Before the end, but nearer to its tick than to the one before.
    EXPECT_EQ(tickOf(CMTime::make(11'999'999'999, nanoseconds)), -1);
    EXPECT_EQ(tickOf(CMTime::make(11'999'990'000, nanoseconds)), 179'999);
}

TEST_F(VideoTimelineTest, GivesTheShortestSessionOneTick) {
    timeline.startAt(CMTime::make(10, 1));
    EXPECT_EQ(tickOf(CMTime::make(10, 1)), 0);
    timeline.endAt(CMTime::make(10, 1));
    EXPECT_EQ(timeline.endTick(), 1);
}

TEST_F(VideoTimelineTest, LeavesOutTimesThatAreNoNumbers) {
    timeline.startAt(kCMTimeZero);
    for (const CMTime time : {kCMTimeInvalid, kCMTimeIndefinite, kCMTimePositiveInfinity, kCMTimeNegativeInfinity}) {
        EXPECT_EQ(tickOf(time), -1) << time.logDescription();
    }
}

}  // namespace
}  // namespace zorvane
