#include "Zorvane/Internal/Concurrency/TaskGroup.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <string>

#include "Zorvane/Internal/Concurrency/Sleep.hpp"
#include "Zorvane/Internal/Concurrency/TaskHandle.hpp"
#include "tests/Support/ManualTime.hpp"

namespace zorvane {
namespace {

using namespace std::chrono_literals;

class TaskGroupTest : public testing::ManualTimeTest {
  protected:
    std::vector<std::string> log() {
        std::lock_guard lock(mutex_);
        return log_;
    }
    void note(std::string line) {
        std::lock_guard lock(mutex_);
        log_.push_back(std::move(line));
    }

    Task<int> after(std::chrono::nanoseconds delay, int value) {
        co_await sleepFor(delay);
        co_return value;
    }

    Task<int> failingAfter(std::chrono::nanoseconds delay) {
        co_await sleepFor(delay);
        note("failed");
        throw std::runtime_error("first");
    }

    // Takes a while to end after its cancellation.
    Task<int> slowToCancel() {
        bool cancelled = false;
        try {
            co_await sleepFor(1h);
        } catch (const ZVCancelled&) {
            cancelled = true;
        }
        EXPECT_TRUE(cancelled);
        note("cancelled");
        auto [continuation, waiter] = makeContinuation();
        auto wakeUp = [continuation = std::move(continuation)] { continuation.resume(); };
        clock->schedule(clock->now() + 1s, 0ns, std::move(wakeUp));
        co_await std::move(waiter).ignoringCancellation();
        note("cleaned up");
        throw std::logic_error("later");
    }

  private:
    std::mutex mutex_;
    std::vector<std::string> log_;
};

TEST_F(TaskGroupTest, GivesResultsInTheOrderOfAddition) {
    auto body = [this]() -> Task<std::vector<int>> {
        TaskGroup<int> group(co_await currentStopToken());
        group.add(after(30ms, 1));
        group.add(after(10ms, 2));
        group.add(after(20ms, 3));
        co_return co_await std::move(group).results();
    };
    EXPECT_EQ(clock->complete(body()), (std::vector{1, 2, 3}));
}

TEST_F(TaskGroupTest, FirstFailureCancelsTheOthersAwaitsThemAndIsRethrown) {
    auto body = [this]() -> Task<std::vector<int>> {
        TaskGroup<int> group(co_await currentStopToken());
        group.add(slowToCancel());
        group.add(failingAfter(5ms));
        co_return co_await std::move(group).results();
    };
    const auto start = clock->now();
    EXPECT_THROW(clock->complete(body()), std::runtime_error);
    EXPECT_EQ(log(), (std::vector<std::string>{"failed", "cancelled", "cleaned up"}));
    EXPECT_EQ(clock->now() - start, 1005ms);
}

TEST_F(TaskGroupTest, CancellationOfTheParentCancelsAllChildrenAndAwaitsThem) {
    auto body = [this]() -> Task<> {
        TaskGroup<int> group(co_await currentStopToken());
        group.add(slowToCancel());
        group.add(after(1h, 1));
        co_await std::move(group).results();
    };
    auto parent = spawn(body());
    clock->advance(1ms);
    parent.cancel();
    clock->advance(999ms);
    EXPECT_EQ(log(), (std::vector<std::string>{"cancelled"}));
    clock->advance(1ms);
    EXPECT_EQ(log(), (std::vector<std::string>{"cancelled", "cleaned up"}));
    EXPECT_THROW(parent.value().get(), ZVCancelled);
}

TEST_F(TaskGroupTest, MapsInInputOrderAndJoinsLists) {
    auto map = [](int& input) -> Task<std::string> {
        co_await sleepFor(std::chrono::milliseconds(10 - input));
        co_return std::to_string(input);
    };
    EXPECT_EQ(clock->complete(concurrentMap(std::vector{1, 2, 3}, map)), (std::vector<std::string>{"1", "2", "3"}));

    auto list = [](int input) -> Task<std::vector<int>> {
        co_await sleepFor(std::chrono::milliseconds(10 - input));
        co_return std::vector<int>(static_cast<std::size_t>(input), input);
    };
    EXPECT_EQ(clock->complete(concurrentFlatMap(std::vector{2, 0, 3}, list)), (std::vector{2, 2, 3, 3, 3}));
}

TEST_F(TaskGroupTest, ForEachRunsAllInParallel) {
    std::atomic<int> ended = 0;
    auto body = [&ended](int) -> Task<> {
        co_await sleepFor(1s);
        ++ended;
    };
    const auto start = clock->now();
    clock->complete(concurrentForEach(std::vector<int>(50), body));
    EXPECT_EQ(ended, 50);
    EXPECT_EQ(clock->now() - start, 1s);
    clock->complete(concurrentForEach(std::vector<int>(), body));
    EXPECT_EQ(ended, 50);
}

TEST_F(TaskGroupTest, AThrowWhileChildrenAreMadeStillAwaitsTheOnesBegun) {
    std::atomic<int> cancelled = 0;
    auto wait = [&cancelled]() -> Task<> {
        bool stopped = false;
        try {
            co_await sleepFor(1h);
        } catch (const ZVCancelled&) {
            stopped = true;
        }
        cancelled += stopped ? 1 : 0;
    };
    auto make = [&wait](int input) -> Task<> {
        if (input == 2) {
            throw std::invalid_argument("no task for this one");
        }
        return wait();
    };
    EXPECT_THROW(clock->complete(concurrentForEach(std::vector{0, 1, 2, 3}, make)), std::invalid_argument);
    EXPECT_EQ(cancelled, 2);
}

}  // namespace
}  // namespace zorvane
