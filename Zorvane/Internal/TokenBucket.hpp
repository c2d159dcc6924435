// A lock for tasks: one token, handed on in the order of arrival.
#pragma once

#include <deque>
#include <memory>
#include <utility>
#include <variant>

#include "Zorvane/Internal/Concurrency/Continuation.hpp"
#include "Zorvane/Internal/Concurrency/Executor.hpp"
#include "Zorvane/Internal/Concurrency/Task.hpp"
#include "Zorvane/Internal/Logger.hpp"

namespace zorvane {

/// At most one task at a time is between `enter` and `exit`. A serialised object; any task may call. It must outlive
/// the tasks of its calls.
class TokenBucket {
  public:
    explicit TokenBucket(Logger logger);

    /// Takes the token, or waits until it is this task's turn. A task that is cancelled while it waits gives up its
    /// place and throws `ZVCancelled`: it has no token to give back.
    Task<> enter();

    /// Gives the token to the first task in line, or back to the bucket. Each `enter` that returned is followed by one
    /// `exit`; another one is logged and has no effect.
    Task<> exit();

    /// Runs `work` between an `enter` and an `exit`, whatever it ends with.
    template <class T>
    Task<T> withToken(Task<T> work) {
        co_await enter();
        ZVOutcome<T> outcome = co_await std::move(work).outcome();
        co_await exit();
        co_return std::move(outcome).value();
    }

  private:
    struct Full {};
    struct Empty {
        std::deque<Continuation<>> waiters;  // in the order of arrival
    };

    Task<> enterOnExecutor();
    Task<> exitOnExecutor();

    const Logger logger_;
    const std::shared_ptr<Executor> executor_ = Executor::makeStrand("TokenBucket");
    std::variant<Full, Empty> state_;  // used on executor_ only
};

}  // namespace zorvane
