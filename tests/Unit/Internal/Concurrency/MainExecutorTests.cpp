#include <gtest/gtest.h>

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "Zorvane/Internal/Concurrency/Activity.hpp"
#include "Zorvane/Internal/Concurrency/Executor.hpp"
#include "Zorvane/Internal/Concurrency/Task.hpp"
#include "Zorvane/ZVMainExecutor.hpp"

namespace zorvane {
namespace {

TEST(MainExecutor, RunsJobsInOrderOnOneThread) {
    std::vector<int> order;
    for (int i = 0; i < 100; ++i) {
        ZVMainExecutor::post([&order, i] {
            EXPECT_TRUE(ZVMainExecutor::isCurrent());
            order.push_back(i);
        });
    }
    Activity::waitUntilIdle();
    ASSERT_EQ(order.size(), 100u);
    EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
    EXPECT_FALSE(ZVMainExecutor::isCurrent());
}

TEST(MainExecutor, RunsTasksInTheLoopOfAHostThatInstallsOne) {
    std::mutex mutex;
    std::condition_variable arrived;
    std::deque<std::function<void()>> loop;
    ZVMainExecutor::install([&](std::function<void()> job) {
        std::lock_guard lock(mutex);
        loop.push_back(std::move(job));
        arrived.notify_one();
    });
    std::optional<std::thread::id> ranOn;
    auto body = [&ranOn]() -> Task<> {
        EXPECT_TRUE(Executor::main()->isCurrent());
        ranOn = std::this_thread::get_id();
        co_return;
    };
    body().on(Executor::main()).start([](ZVOutcome<>) {});
    for (int jobs = 0; jobs < 2; ++jobs) {  // the body and the completion
        std::unique_lock lock(mutex);
        arrived.wait(lock, [&loop] { return !loop.empty(); });
        auto job = std::move(loop.front());
        loop.pop_front();
        lock.unlock();
        job();
    }
    ZVMainExecutor::install(nullptr);
    EXPECT_EQ(ranOn, std::this_thread::get_id());
}

}  // namespace
}  // namespace zorvane
