#include "Zorvane/Internal/Concurrency/Task.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <future>
#include <stdexcept>
#include <string>
#include <vector>

#include "Zorvane/Internal/Concurrency/Activity.hpp"
#include "Zorvane/Internal/Concurrency/Continuation.hpp"
#include "Zorvane/Internal/Concurrency/CurrentTask.hpp"
#include "Zorvane/Internal/Concurrency/Executor.hpp"
#include "Zorvane/Internal/Concurrency/Sleep.hpp"
#include "Zorvane/Internal/Concurrency/TaskHandle.hpp"
#include "Zorvane/ZVMainExecutor.hpp"

namespace zorvane {
namespace {

Task<int> immediate(int value) {
    co_return value;
}

Task<int> failing(const char* message) {
    throw std::runtime_error(message);
    co_return 0;
}

Task<std::size_t> depth(std::size_t levels) {
    if (levels == 0) {
        co_return 0;
    }
    co_return 1 + co_await depth(levels - 1);
}

Task<std::int64_t> sumOfImmediates(int count) {
    std::int64_t sum = 0;
    for (int i = 0; i < count; ++i) {
        sum += co_await immediate(1);
    }
    co_return sum;
}

Task<bool> isOn(std::shared_ptr<Executor> executor) {
    co_return executor->isCurrent();
}

struct LifeCounter {
    explicit LifeCounter(int& count) : alive(count) { ++alive; }
    LifeCounter(const LifeCounter& other) : alive(other.alive) { ++alive; }
    LifeCounter& operator=(const LifeCounter&) = delete;
    ~LifeCounter() { --alive; }
    int& alive;
};

Task<> holding(LifeCounter) {
    co_return;
}

TEST(Task, AwaitsAMillionTasksThatFinishAtOnceWithoutGrowingTheStack) {
    EXPECT_EQ(sumOfImmediates(1'000'000).get(), 1'000'000);
}

TEST(Task, ReturnsThroughADeepChainOfAwaitsWithoutGrowingTheStack) {
    EXPECT_EQ(depth(200'000).get(), 200'000u);
}

TEST(Task, DoesNothingUntilItIsConsumedAndReleasesItsArgumentsWhenDropped) {
    int alive = 0;
    bool ran = false;
    {
        auto body = [&ran](LifeCounter) -> Task<> {
            ran = true;
            co_return;
        };
        auto task = body(LifeCounter(alive));
        EXPECT_EQ(alive, 1);
    }
    EXPECT_FALSE(ran);
    EXPECT_EQ(alive, 0);
}

TEST(Task, HasReleasedItsArgumentsWhenItsValueArrives) {
    int alive = 0;
    holding(LifeCounter(alive)).get();
    EXPECT_EQ(alive, 0);

    auto parent = [&alive]() -> Task<int> {
        auto child = holding(LifeCounter(alive));
        co_await std::move(child);
        co_return alive;
    };
    EXPECT_EQ(parent().get(), 0);
}

TEST(Task, CarriesAnExceptionAcrossExecutorsToTheAwaitingCoroutineOnItsOwnExecutor) {
    auto home = Executor::makeStrand("home");
    auto away = Executor::makeStrand("away");
    auto parent = [&]() -> Task<std::string> {
        std::string message;
        try {
            co_await failing("lost").on(away);
        } catch (const std::runtime_error& error) {
            message = error.what();
        }
        EXPECT_TRUE(home->isCurrent());
        EXPECT_FALSE(away->isCurrent());
        co_return message;
    };
    EXPECT_EQ(parent().on(home).get(), "lost");
}

TEST(Task, RunsItsBodyOnTheGivenExecutorAndItsChildrenInheritIt) {
    auto strand = Executor::makeStrand("strand");
    auto parent = [&]() -> Task<> {
        EXPECT_TRUE(strand->isCurrent());
        EXPECT_TRUE(co_await isOn(strand));
        EXPECT_TRUE(co_await isOn(Executor::pool()).on(Executor::pool()));
        EXPECT_TRUE(strand->isCurrent());
    };
    EXPECT_TRUE(isOn(Executor::pool()).get());
    parent().on(strand).get();
}

TEST(Task, KeepsItsExecutorAliveWhileItRuns) {
    auto strand = Executor::makeStrand("short-lived");
    std::weak_ptr<Executor> observed = strand;
    auto body = []() -> Task<int> {
        const int first = co_await immediate(1).on(Executor::pool());
        co_return first + co_await immediate(2);
    };
    auto task = body().on(std::move(strand));
    EXPECT_EQ(std::move(task).get(), 3);
    Activity::waitUntilIdle();  // whoever posted to it last holds it until its own job ends
    EXPECT_TRUE(observed.expired());
}

TEST(Task, GivesItsOutcomeWithoutThrowing) {
    auto parent = []() -> Task<> {
        auto success = co_await immediate(7).outcome();
        EXPECT_TRUE(success.isSuccess());
        EXPECT_EQ(std::move(success).value(), 7);

        auto failure = co_await failing("no").outcome();
        EXPECT_FALSE(failure.isSuccess());
        EXPECT_FALSE(failure.isCancelled());
        EXPECT_THROW(std::move(failure).value(), std::runtime_error);
    };
    parent().get();
}

TEST(Task, GetThrowsWhatTheTaskThrew) {
    EXPECT_THROW(failing("no").get(), std::runtime_error);
}

TEST(Task, GetInsideATaskIsRefusedInsteadOfBlockingForEver) {
    auto parent = []() -> Task<int> { co_return immediate(1).get(); };
    EXPECT_THROW(parent().get(), std::logic_error);
}

TEST(Task, InheritsTheStopTokenOfTheHostAndOfItsParent) {
    std::stop_source host;
    auto child = []() -> Task<bool> {
        co_await checkCancellation();
        co_return (co_await currentStopToken()).stop_requested();
    };
    auto parent = [&]() -> Task<> {
        EXPECT_FALSE(co_await child());
        host.request_stop();
        EXPECT_TRUE((co_await child().outcome()).isCancelled());
        co_await child();
    };
    EXPECT_THROW(parent().get(host.get_token()), ZVCancelled);
}

TEST(Task, StartDeliversAMoveOnlyOutcomeOnTheMainExecutor) {
    auto body = []() -> Task<std::unique_ptr<int>> { co_return std::make_unique<int>(5); };
    std::promise<int> delivered;
    body().start([&delivered](ZVOutcome<std::unique_ptr<int>> outcome) {
        EXPECT_TRUE(ZVMainExecutor::isCurrent());
        delivered.set_value(*std::move(outcome).value());
    });
    EXPECT_EQ(delivered.get_future().get(), 5);
}

// A coroutine type the library knows nothing of.
struct ForeignCoroutine {
    struct promise_type {
        ForeignCoroutine get_return_object() { return {}; }
        std::suspend_never initial_suspend() noexcept { return {}; }
        std::suspend_never final_suspend() noexcept { return {}; }
        void return_void() {}
        void unhandled_exception() { std::terminate(); }
    };
};

ForeignCoroutine sumInForeignCoroutine(int count, std::promise<int>& result) {
    int sum = 0;
    for (int i = 0; i < count; ++i) {
        sum += co_await immediate(1);
    }
    result.set_value(sum);
}

TEST(Task, CanBeAwaitedByAForeignCoroutine) {
    std::promise<int> result;
    sumInForeignCoroutine(10'000, result);
    EXPECT_EQ(result.get_future().get(), 10'000);
}

TEST(TaskDeathTest, TheProcessExitsQuietlyWhileTasksRunAndWait) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    auto exitWithTasksInFlight = [] {
        auto forever = []() -> Task<> {
            while (true) {
                co_await sleepFor(std::chrono::nanoseconds(0));
            }
        };
        for (int i = 0; i < 20; ++i) {
            spawn(forever());
            spawn(sleepFor(std::chrono::hours(1)), Executor::makeStrand("waiting"));
        }
        std::exit(0);
    };
    EXPECT_EXIT(exitWithTasksInFlight(), ::testing::ExitedWithCode(0), "^$");
}

// A serialised object: all of its operations run on its own strand.
class Account {
  public:
    Task<> deposit(int amount) { co_return co_await depositOnExecutor(amount).on(executor_); }

    Task<> depositAround(Waiter<> pause, int amount) {
        co_return co_await depositAroundOnExecutor(std::move(pause), amount).on(executor_);
    }

    Task<std::vector<std::string>> log() {
        auto read = [this]() -> Task<std::vector<std::string>> { co_return log_; };
        co_return co_await read().on(executor_);
    }

  private:
    Task<> depositOnExecutor(int amount) {
        log_.push_back("begin " + std::to_string(amount));
        co_await immediate(0);  // finishes at once on the same executor: no interleaving
        log_.push_back("end " + std::to_string(amount));
    }

    Task<> depositAroundOnExecutor(Waiter<> pause, int amount) {
        log_.push_back("begin " + std::to_string(amount));
        co_await std::move(pause);
        log_.push_back("end " + std::to_string(amount));
    }

    std::shared_ptr<Executor> executor_ = Executor::makeStrand("account");
    std::vector<std::string> log_;  // belongs to the strand
};

TEST(SerialisedObject, InterleavesItsOperationsOnlyWhereTheySuspend) {
    Account account;
    auto [resume, pause] = makeContinuation();
    auto first = spawn(account.depositAround(std::move(pause), 1));
    while (account.log().get().empty()) {
    }
    account.deposit(2).get();
    resume.resume();
    first.value().get();
    const std::vector<std::string> expected = {"begin 1", "begin 2", "end 2", "end 1"};
    EXPECT_EQ(account.log().get(), expected);
}

TEST(SerialisedObject, NeverRunsTwoOperationsAtOnce) {
    Account account;
    std::vector<TaskHandle<>> operations;
    for (int i = 0; i < 200; ++i) {
        operations.push_back(spawn(account.deposit(i)));
    }
    for (auto& operation : operations) {
        operation.value().get();
    }
    const auto log = account.log().get();
    ASSERT_EQ(log.size(), 400u);
    for (std::size_t i = 0; i < log.size(); i += 2) {
        EXPECT_EQ("end" + log[i].substr(5), log[i + 1]);
    }
}

}  // namespace
}  // namespace zorvane
