#include "Zorvane/Internal/RecordingInterval.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <thread>
#include <vector>

#include "tests/Support/Timeline.hpp"

namespace zorvane {
namespace {

using testing::recording;

constexpr double infinity = std::numeric_limits<double>::infinity();

TEST(RecordingIntervalTest, NoTimeBelongsToARecordingThatHasNotStarted) {
    const StableRecordingInterval unstarted(recording());
    EXPECT_FALSE(unstarted.contains(0));
    EXPECT_FALSE(unstarted.contains(std::numeric_limits<double>::max()));

    const auto interval = recording();
    interval->stop(10);
    const StableRecordingInterval stoppedOnly(interval);
    EXPECT_FALSE(stoppedOnly.contains(5));
    EXPECT_EQ(stoppedOnly.recordFrom(), infinity);
}

TEST(RecordingIntervalTest, TheStartBelongsToTheRecordingAndTheEndDoesNot) {
    const StableRecordingInterval open(recording(5));
    EXPECT_FALSE(open.contains(std::nextafter(5.0, 0.0)));
    EXPECT_TRUE(open.contains(5));
    EXPECT_TRUE(open.contains(1e15));

    const StableRecordingInterval stopped(recording(5, 8));
    EXPECT_TRUE(stopped.contains(std::nextafter(8.0, 0.0)));
    EXPECT_FALSE(stopped.contains(8));
}

TEST(RecordingIntervalTest, AHolderKeepsItsPairUntilItRefreshes) {
    const auto interval = recording();
    StableRecordingInterval holder(interval);
    const StableRecordingInterval sibling = holder;
    interval->start(5);
    interval->stop(8);
    EXPECT_EQ(holder.recordFrom(), infinity);

    holder.refresh();
    EXPECT_EQ(holder.recordFrom(), 5);
    EXPECT_EQ(holder.recordUntil(), 8);
    EXPECT_EQ(sibling.recordFrom(), infinity) << "copies go their own ways";
}

TEST(RecordingIntervalTest, WhoeverSeesTheStopSeesTheStart) {
    const auto interval = recording();
    std::vector<std::jthread> readers;
    for (int reader = 0; reader < 3; ++reader) {
        readers.emplace_back([interval] {
            StableRecordingInterval holder(interval);
            while (std::isinf(holder.recordUntil())) {
                holder.refresh();
            }
            EXPECT_EQ(holder.recordFrom(), 5);
        });
    }
    interval->start(5);
    interval->stop(8);
}

}  // namespace
}  // namespace zorvane
