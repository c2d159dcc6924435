#include "Zorvane/Internal/TokenBucket.hpp"

#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

#include "Zorvane/Internal/Concurrency/Activity.hpp"
#include "Zorvane/Internal/Concurrency/Sleep.hpp"
#include "Zorvane/Internal/Concurrency/TaskGroup.hpp"
#include "Zorvane/Internal/Concurrency/TaskHandle.hpp"
#include "tests/Support/LogCapture.hpp"
#include "tests/Support/ManualTime.hpp"

namespace zorvane {
namespace {

class TokenBucketTest : public testing::ManualTimeTest {
  protected:
    /// Enters, notes that it is in, and stays.
    Task<> enterAs(int task) {
        co_await bucket.enter();
        entered.push_back(task);
    }

    TaskHandle<> startEntering(int task) {
        auto handle = spawn(enterAs(task));
        Activity::waitUntilIdle();
        return handle;
    }

    void exit() {
        bucket.exit().get();
        Activity::waitUntilIdle();
    }

    LogCapture log;
    TokenBucket bucket{log.logger<TokenBucket>()};
    std::vector<int> entered;
};

TEST_F(TokenBucketTest, LetsOneInAtATimeInTheOrderOfArrival) {
    for (int task = 1; task <= 3; ++task) {
        startEntering(task);
    }
    EXPECT_EQ(entered, (std::vector<int>{1}));
    exit();
    EXPECT_EQ(entered, (std::vector<int>{1, 2}));
    exit();
    EXPECT_EQ(entered, (std::vector<int>{1, 2, 3}));
    exit();
    startEntering(4);
    EXPECT_EQ(entered.back(), 4) << "the last exit filled the bucket";
    EXPECT_EQ(log.messages().size(), 0u);
}

TEST_F(TokenBucketTest, AnExitTooManyIsLoggedAndHasNoEffect) {
    exit();
    EXPECT_EQ(log.count(ZVLogLevel::critical, "TokenBucket in invalid state during exit."), 1u);
    startEntering(1);
    startEntering(2);
    EXPECT_EQ(entered, (std::vector<int>{1}));
}

TEST_F(TokenBucketTest, ACancelledTaskGivesUpItsPlaceInLine) {
    startEntering(1);
    const TaskHandle<> second = startEntering(2);
    startEntering(3);
    second.cancel();
    EXPECT_THROW(second.value().get(), ZVCancelled);
    exit();
    EXPECT_EQ(entered, (std::vector<int>{1, 3}));
    exit();
    startEntering(4);
    EXPECT_EQ(entered.back(), 4);
}

TEST_F(TokenBucketTest, WorkUnderTheTokenGivesItBackWhateverItEndsWith) {
    const auto failing = []() -> Task<int> {
        throw std::runtime_error("gone");
        co_return 0;
    };
    const auto succeeding = []() -> Task<int> { co_return 7; };
    EXPECT_THROW(bucket.withToken(failing()).get(), std::runtime_error);
    EXPECT_EQ(bucket.withToken(succeeding()).get(), 7);
    startEntering(1);
    EXPECT_EQ(entered, (std::vector<int>{1}));
}

TEST_F(TokenBucketTest, WorkOfManyTasksNeverOverlaps) {
    int inside = 0;
    int mostInside = 0;
    const auto work = [&]() -> Task<> {
        mostInside = std::max(mostInside, ++inside);
        co_await sleepFor(std::chrono::milliseconds(10));
        --inside;
    };
    const auto allWork = [&](int count) -> Task<> {
        TaskGroup<> group(co_await currentStopToken());
        for (int task = 0; task < count; ++task) {
            group.add(bucket.withToken(work()));
        }
        co_await std::move(group).results();
    };
    const auto before = clock->now();
    clock->complete(allWork(20));
    EXPECT_EQ(mostInside, 1);
    EXPECT_EQ(clock->now() - before, std::chrono::milliseconds(200));
}

}  // namespace
}  // namespace zorvane
