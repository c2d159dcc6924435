#include "Zorvane/Internal/Concurrency/Continuation.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <stdexcept>
#include <thread>
#include <vector>

#include "Zorvane/Internal/Concurrency/TaskHandle.hpp"

namespace zorvane {
namespace {

template <class T>
Task<T> waitFor(Waiter<T> waiter) {
    co_return co_await std::move(waiter);
}

TEST(Continuation, ResumedBeforeTheWaitGoesOnAtOnce) {
    auto [continuation, waiter] = makeContinuation<int>();
    EXPECT_TRUE(continuation.resume(3));
    EXPECT_FALSE(continuation.resume(4));
    EXPECT_EQ(waitFor(std::move(waiter)).get(), 3);
}

TEST(Continuation, ResumedByThrowingThrowsFromTheWait) {
    auto [continuation, waiter] = makeContinuation<>();
    auto waiting = spawn(waitFor(std::move(waiter)));
    EXPECT_TRUE(continuation.resumeThrowing(std::out_of_range("far")));
    EXPECT_THROW(waiting.value().get(), std::out_of_range);
}

TEST(Continuation, ResumedBySeveralThreadsTakesExactlyOneOfThem) {
    constexpr int threads = 4;
    for (int round = 0; round < 200; ++round) {
        auto [continuation, waiter] = makeContinuation<int>();
        auto waiting = spawn(waitFor(std::move(waiter)));
        std::atomic<int> winner = -1;
        std::latch ready(threads);
        std::vector<std::jthread> resumers;
        for (int i = 0; i < threads; ++i) {
            resumers.emplace_back([i, &winner, &ready, continuation = continuation] {
                ready.arrive_and_wait();
                if (continuation.resume(i)) {
                    EXPECT_EQ(winner.exchange(i), -1) << "two calls won";
                }
            });
        }
        resumers.clear();
        EXPECT_EQ(waiting.value().get(), winner);
    }
}

TEST(Continuation, DroppedByAllMakesTheWaitThrowInsteadOfLastingForEver) {
    auto pair = makeContinuation<int>();
    auto waiting = spawn(waitFor(std::move(pair.second)));
    auto copy = std::make_optional(pair.first);
    { auto dropped = std::move(pair.first); }
    EXPECT_TRUE(copy.has_value());
    copy.reset();
    EXPECT_THROW(waiting.value().get(), std::logic_error);
}

TEST(Continuation, CancelledWhileSuspendedThrowsAtOnce) {
    auto [continuation, waiter] = makeContinuation<int>();
    auto waiting = spawn(waitFor(std::move(waiter)));
    waiting.cancel();
    EXPECT_THROW(waiting.value().get(), ZVCancelled);
    EXPECT_FALSE(continuation.resume(1));
}

TEST(Continuation, CancelledBeforeTheWaitThrowsAtTheWait) {
    auto [continuation, waiter] = makeContinuation<int>();
    std::stop_source cancelled;
    cancelled.request_stop();
    EXPECT_THROW(waitFor(std::move(waiter)).get(cancelled.get_token()), ZVCancelled);
}

TEST(Continuation, CancellationRacingWithResumptionEndsTheWaitOneWayOrTheOther) {
    for (int round = 0; round < 1000; ++round) {
        auto [continuation, waiter] = makeContinuation<int>();
        auto waiting = spawn(waitFor(std::move(waiter)));
        bool won = false;
        {
            std::jthread resumer([&won, continuation = continuation] { won = continuation.resume(1); });
            waiting.cancel();
        }
        auto outcome = waiting.value().outcome();
        auto read = [](auto awaited) -> Task<ZVOutcome<int>> { co_return co_await std::move(awaited); };
        EXPECT_EQ(read(std::move(outcome)).get().isSuccess(), won);
    }
}

TEST(Continuation, CancellationHandlerReplacesTheThrow) {
    auto [continuation, waiter] = makeContinuation<int>();
    int calls = 0;
    auto handler = [&calls, continuation = continuation] {
        ++calls;
        continuation.resume(42);
    };
    waiter.onCancel(handler);
    auto waiting = spawn(waitFor(std::move(waiter)));
    waiting.cancel();
    EXPECT_EQ(waiting.value().get(), 42);
    EXPECT_EQ(calls, 1);
}

TEST(Continuation, CanIgnoreCancellation) {
    auto [continuation, waiter] = makeContinuation<int>();
    auto waiting = spawn(waitFor(std::move(waiter).ignoringCancellation()));
    waiting.cancel();
    EXPECT_TRUE(continuation.resume(1));
    EXPECT_EQ(waiting.value().get(), 1);
}

}  // namespace
}  // namespace zorvane
