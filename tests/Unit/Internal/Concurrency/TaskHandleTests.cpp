#include "Zorvane/Internal/Concurrency/TaskHandle.hpp"

#include <gtest/gtest.h>

#include <future>
#include <memory>
#include <stdexcept>

#include "Zorvane/Internal/Concurrency/Sleep.hpp"
#include "tests/Support/ManualTime.hpp"

namespace zorvane {
namespace {

using namespace std::chrono_literals;

class TaskHandleTest : public testing::ManualTimeTest {};

TEST_F(TaskHandleTest, GivesItsValueToEveryWaiterBeforeAndAfterTheEnd) {
    auto body = []() -> Task<int> {
        co_await sleepFor(1s);
        co_return 8;
    };
    auto handle = spawn(body());
    auto early = spawn(handle.value());
    auto copy = handle;
    auto alsoEarly = spawn(copy.value());
    clock->advance(1s);
    EXPECT_EQ(early.value().get(), 8);
    EXPECT_EQ(alsoEarly.value().get(), 8);
    EXPECT_EQ(handle.value().get(), 8);
}

TEST_F(TaskHandleTest, RunsOnWhenTheHandleIsDropped) {
    std::promise<void> ended;
    auto body = [&ended]() -> Task<> {
        co_await sleepFor(1s);
        ended.set_value();
    };
    spawn(body());
    clock->advance(1s);
    EXPECT_EQ(ended.get_future().wait_for(0s), std::future_status::ready);
}

TEST_F(TaskHandleTest, CancellingAWaiterLeavesTheTaskAlone) {
    auto body = []() -> Task<int> {
        co_await sleepFor(1s);
        co_return 8;
    };
    auto handle = spawn(body());
    auto waiter = spawn(handle.value());
    waiter.cancel();
    EXPECT_THROW(waiter.value().get(), ZVCancelled);
    clock->advance(1s);
    EXPECT_EQ(handle.value().get(), 8);
}

TEST_F(TaskHandleTest, GivesItsErrorToEveryWaiterAndTellsTheEndWithoutThrowing) {
    auto body = []() -> Task<> {
        throw std::runtime_error("broken");
        co_return;
    };
    auto handle = spawn(body());
    handle.finished().get();
    EXPECT_THROW(handle.value().get(), std::runtime_error);
    EXPECT_THROW(handle.value().get(), std::runtime_error);
}

TEST_F(TaskHandleTest, JoiningWaitsUntilTheTaskHasLetGoOfAllThatItUsedAlsoInsideATask) {
    const auto used = std::make_shared<int>();
    const auto body = [](std::shared_ptr<int>) -> Task<> { co_await sleepFor(1s); };
    const auto joinFour = [&]() -> Task<> {
        for (int round = 0; round < 4; ++round) {
            const auto handle = spawn(body(used));
            handle.cancelAndJoin();
            EXPECT_EQ(used.use_count(), 1);
            handle.cancelAndJoin();
        }
        TaskHandle<>().cancelAndJoin();
        co_return;
    };
    joinFour().get();
}

}  // namespace
}  // namespace zorvane
