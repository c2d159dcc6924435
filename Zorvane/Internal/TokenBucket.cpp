#include "Zorvane/Internal/TokenBucket.hpp"

namespace zorvane {

TokenBucket::TokenBucket(Logger logger) : logger_(std::move(logger)) {}

Task<> TokenBucket::enter() {
    return enterOnExecutor().on(executor_);
}

Task<> TokenBucket::exit() {
    return exitOnExecutor().on(executor_);
}

Task<> TokenBucket::enterOnExecutor() {
    auto* empty = std::get_if<Empty>(&state_);
    if (!empty) {
        state_ = Empty();
        co_return;
    }
    auto [continuation, waiter] = makeContinuation();
    empty->waiters.push_back(std::move(continuation));
    co_await std::move(waiter);
}

Task<> TokenBucket::exitOnExecutor() {
    auto* empty = std::get_if<Empty>(&state_);
    if (!empty) {
        logger_.critical("TokenBucket in invalid state during exit.");
        co_return;
    }
    while (!empty->waiters.empty()) {
        const Continuation<> next = std::move(empty->waiters.front());
        empty->waiters.pop_front();
        if (next.resume()) {
            co_return;  // the token is the next task's
        }
        // That task was cancelled, and has gone.
    }
    state_ = Full();
}

}  // namespace zorvane
