#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <stdexcept>
#include <string>

#include "Zorvane/Internal/Concurrency/Activity.hpp"
#include "Zorvane/Internal/RetryOnError.hpp"
#include "Zorvane/Internal/WithTimeout.hpp"
#include "tests/Support/ManualTime.hpp"

namespace zorvane {
namespace {

using namespace std::chrono_literals;

constexpr double infinity = std::numeric_limits<double>::infinity();

TEST(SleepDurationTest, SecondsNeverOverflow) {
    EXPECT_EQ(sleepDuration(1.5), 1500ms);
    EXPECT_EQ(sleepDuration(-1), 0ns);
    EXPECT_EQ(sleepDuration(std::numeric_limits<double>::quiet_NaN()), 0ns);
    EXPECT_GT(sleepDuration(infinity), 24h * 365 * 100);
    EXPECT_GT(sleepDuration(infinity) + 24h * 365 * 100, 0ns);
}

class RetryAndTimeoutTest : public testing::ManualTimeTest {
  protected:
    /// Fails with "1", "2", ... until it has been called `succeedsAt` times.
    Task<int> attempt(int succeedsAt) {
        if (++calls < succeedsAt) {
            throw std::runtime_error(std::to_string(calls));
        }
        co_return calls;
    }

    std::chrono::nanoseconds elapsed() const { return clock->now() - start; }

    const std::chrono::nanoseconds start = clock->now();
    const std::exception_ptr timedOut = std::make_exception_ptr(std::domain_error("timed out"));
    int calls = 0;
};

TEST_F(RetryAndTimeoutTest, RetriesUntilAnAttemptSucceeds) {
    const auto operation = [this] { return attempt(2); };
    EXPECT_EQ(clock->complete(retryOnError(3, 0.25, operation)), 2);
    EXPECT_EQ(elapsed(), 250ms);
}

TEST_F(RetryAndTimeoutTest, TheLastAttemptsErrorIsTheOneThatIsThrown) {
    const auto operation = [this] { return attempt(99); };
    try {
        clock->complete(retryOnError(3, 0.25, operation));
        ADD_FAILURE() << "threw nothing";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "3");
    }
    EXPECT_EQ(elapsed(), 500ms) << "no delay after the last attempt";
}

TEST_F(RetryAndTimeoutTest, ACancelledRetryMakesNoFurtherAttempt) {
    const auto operation = [this] { return attempt(99); };
    const auto handle = spawn(retryOnError(5, infinity, operation));
    Activity::waitUntilIdle();
    handle.cancel();
    EXPECT_THROW(clock->complete(handle.value()), ZVCancelled);
    EXPECT_EQ(calls, 1);
}

TEST_F(RetryAndTimeoutTest, ABodyThatEndsInTimeDecides) {
    const auto value = [this] { return attempt(1); };
    EXPECT_EQ(clock->complete(withTimeout(infinity, timedOut, value)), 1);
    const auto nothing = []() -> Task<> { co_await sleepFor(1s); };
    clock->complete(withTimeout(2, timedOut, nothing));
    const auto failing = [this] { return attempt(99); };
    EXPECT_THROW(clock->complete(withTimeout(1, timedOut, failing)), std::runtime_error);
    EXPECT_EQ(elapsed(), 1s);
    Activity::waitUntilIdle();
    EXPECT_EQ(clock->pendingTimers(), 0u) << "the time limits are cancelled";
}

TEST_F(RetryAndTimeoutTest, ABodyThatIsTooLateIsCancelledAndTheErrorThrown) {
    auto wasCancelled = std::make_shared<std::atomic<bool>>(false);
    const auto body = [wasCancelled]() -> Task<> {
        const auto outcome = co_await sleepFor(1h).outcome();
        *wasCancelled = outcome.isCancelled();
    };
    EXPECT_THROW(clock->complete(withTimeout(0.5, timedOut, body)), std::domain_error);
    EXPECT_EQ(elapsed(), 500ms);
    Activity::waitUntilIdle();
    EXPECT_TRUE(*wasCancelled);
}

TEST_F(RetryAndTimeoutTest, ABodyThatNeverEndsDoesNotHoldUpTheError) {
    auto [continuation, waiter] = makeContinuation();
    auto endless = std::make_shared<Waiter<>>(std::move(waiter));
    const auto body = [endless]() -> Task<> { co_await std::move(*endless).ignoringCancellation(); };
    EXPECT_THROW(clock->complete(withTimeout(0.5, timedOut, body)), std::domain_error);
    continuation.resume();
}

TEST_F(RetryAndTimeoutTest, CancellingTheWaitCancelsTheBody) {
    const auto body = []() -> Task<> { co_await sleepFor(1h); };
    const auto handle = spawn(withTimeout(infinity, timedOut, body));
    Activity::waitUntilIdle();
    handle.cancel();
    EXPECT_THROW(clock->complete(handle.value()), ZVCancelled);
    Activity::waitUntilIdle();
    EXPECT_EQ(clock->pendingTimers(), 0u);
}

}  // namespace
}  // namespace zorvane
