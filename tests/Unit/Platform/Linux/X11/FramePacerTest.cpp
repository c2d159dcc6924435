#include "Zorvane/Platform/Linux/X11/FramePacer.hpp"

#include <gtest/gtest.h>

#include <string>

namespace zorvane {
namespace {

using Step = FramePacer::Step;
using std::chrono::milliseconds;
using std::chrono::nanoseconds;

constexpr milliseconds interval{10};
constexpr milliseconds stillAfter{100};

struct FramePacerTest : testing::Test {
    FramePacer pacer{interval, stillAfter};

    /// What is to be done at a time, as text: the step, and the deadline in milliseconds if there is one.
    std::string at(milliseconds now) const {
        const auto decision = pacer.decide(now);
        const std::string step[]{"read", "tellIdle", "listen", "rest"};
        const auto deadline = decision.deadline ? " " + std::to_string(*decision.deadline / milliseconds(1)) : "";
        return step[static_cast<int>(decision.step)] + deadline;
    }
};

TEST_F(FramePacerTest, WithoutAChangeThereIsNothingToWakeUpFor) {
    EXPECT_EQ(at(milliseconds(0)), "listen");
    EXPECT_EQ(at(milliseconds(1000)), "listen");
}

TEST_F(FramePacerTest, TheFirstChangeAfterQuietIsReadAtOnce) {
    pacer.noteChange(milliseconds(500));
    EXPECT_EQ(at(milliseconds(500)), "read");
}

TEST_F(FramePacerTest, ABurstIsReadOnAGridThatDoesNotDrift) {
    pacer.noteChange(milliseconds(0));
    pacer.noteRead(milliseconds(1), true);
    // Each read is 3 ms late; the grid stays at 11, 21, 31, ...
    for (int step = 1; step <= 100; ++step) {
        const milliseconds due(1 + 10 * step);
        pacer.noteChange(due - milliseconds(5));
        ASSERT_EQ(at(due - milliseconds(5)), "rest " + std::to_string(due.count()));
        ASSERT_EQ(at(due), "read");
        pacer.noteRead(due + milliseconds(3), true);
    }
}

TEST_F(FramePacerTest, AfterALateReadOrAPauseTheIntervalIsKept) {
    pacer.noteChange(milliseconds(0));
    pacer.noteRead(milliseconds(0), true);
    pacer.noteChange(milliseconds(5));
    pacer.noteRead(milliseconds(18), true);  // 8 ms late: the next on the grid would be 2 ms away
    pacer.noteChange(milliseconds(19));
    EXPECT_EQ(at(milliseconds(19)), "rest 28");
    pacer.noteRead(milliseconds(28), true);
    pacer.noteChange(milliseconds(39));  // nothing was waiting at 38
    EXPECT_EQ(at(milliseconds(39)), "read");
    pacer.noteRead(milliseconds(39), true);
    pacer.noteChange(milliseconds(40));
    EXPECT_EQ(at(milliseconds(40)), "rest 49");
}

TEST_F(FramePacerTest, StillnessIsToldOnceAfterThePicture) {
    pacer.noteChange(milliseconds(0));
    pacer.noteRead(milliseconds(0), true);
    EXPECT_EQ(at(milliseconds(1)), "listen 100");
    EXPECT_EQ(at(milliseconds(100)), "tellIdle");
    pacer.noteIdle();
    EXPECT_EQ(at(milliseconds(100)), "listen");
    pacer.noteChange(milliseconds(200));
    EXPECT_EQ(at(milliseconds(200)), "read");
}

TEST_F(FramePacerTest, AChangeThatMakesNoPictureIsPacedButBreaksNoStillness) {
    pacer.noteChange(milliseconds(0));
    pacer.noteRead(milliseconds(0), true);
    pacer.noteIdle();
    pacer.noteChange(milliseconds(300));
    pacer.noteRead(milliseconds(300), false);
    EXPECT_EQ(at(milliseconds(301)), "listen");
    pacer.noteChange(milliseconds(302));
    EXPECT_EQ(at(milliseconds(302)), "rest 310");
}

TEST_F(FramePacerTest, WithoutRoomTheChangeWaitsForTheNextInterval) {
    pacer.noteChange(milliseconds(0));
    pacer.noteNoRoom(milliseconds(0));
    EXPECT_EQ(at(milliseconds(1)), "rest 10");
    EXPECT_EQ(at(milliseconds(10)), "read");
    pacer.noteNoRoom(milliseconds(10));
    EXPECT_EQ(at(milliseconds(20)), "read");
    pacer.noteRead(milliseconds(20), true);
    EXPECT_EQ(at(milliseconds(20)), "listen 120");
}

}  // namespace
}  // namespace zorvane
