// A time limit on a suspending call.
#pragma once

#include <exception>
#include <type_traits>
#include <utility>

#include "Zorvane/Internal/Concurrency/Continuation.hpp"
#include "Zorvane/Internal/Concurrency/Sleep.hpp"
#include "Zorvane/Internal/Concurrency/TaskHandle.hpp"
#include "Zorvane/Internal/SleepDuration.hpp"

namespace zorvane {
namespace time_limit {

/// Cancels a task when the scope ends.
class ScopedTask {
  public:
    explicit ScopedTask(Task<> task) : handle_(spawn(std::move(task))) {}
    ScopedTask(const ScopedTask&) = delete;
    ScopedTask& operator=(const ScopedTask&) = delete;
    ~ScopedTask() { handle_.cancel(); }

  private:
    TaskHandle<> handle_;
};

/// Decides with what `body` gives.
template <class T, class Body>
Task<> decideByBody(Body body, Continuation<T> decision) {
    ZVOutcome<T> outcome = co_await body().outcome();
    if (!outcome.isSuccess()) {
        decision.resumeThrowing(outcome.error());
    } else if constexpr (std::is_void_v<T>) {
        decision.resume();
    } else {
        decision.resume(std::move(outcome).value());
    }
}

/// Decides with `error` after a while.
template <class T>
Task<> decideByTime(std::chrono::nanoseconds duration, std::exception_ptr error, Continuation<T> decision) {
    co_await sleepFor(duration);
    decision.resumeThrowing(std::move(error));
}

}  // namespace time_limit

/// Runs `body()`, which makes a `Task`, for at most `timeout` seconds. The first to come decides: the body's value,
/// its throw, or at the end of the time a throw of `error`, which is not null. Then, or when the waiting task is
/// cancelled, the body is cancelled and not waited for: it must react to cancellation, and must keep alive what it
/// uses.
template <class Body>
std::invoke_result_t<Body&> withTimeout(double timeout, std::exception_ptr error, Body body) {
    using T = typename std::invoke_result_t<Body&>::ResultType;
    auto [decision, decided] = makeContinuation<T>();
    const time_limit::ScopedTask bodyTask(time_limit::decideByBody<T>(std::move(body), decision));
    const time_limit::ScopedTask timer(time_limit::decideByTime<T>(sleepDuration(timeout), std::move(error), decision));
    co_return co_await std::move(decided);
}

}  // namespace zorvane
