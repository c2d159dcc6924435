// What a running task may know of itself.
#pragma once

#include <coroutine>
#include <stop_token>

#include "Zorvane/Internal/Concurrency/Task.hpp"

namespace zorvane {

namespace detail {

/// Reads the stop token of the awaiting task; never suspends it.
class StopTokenAwaiter {
  public:
    bool await_ready() const noexcept { return false; }

    template <std::derived_from<TaskPromiseBase> Promise>
    bool await_suspend(std::coroutine_handle<Promise> coroutine) noexcept {
        token_ = coroutine.promise().context.stopToken;
        return false;
    }

    std::stop_token await_resume() noexcept { return std::move(token_); }

  protected:
    std::stop_token token_;
};

class CancellationCheckAwaiter : public StopTokenAwaiter {
  public:
    void await_resume() const {
        if (token_.stop_requested()) {
            throw ZVCancelled();
        }
    }
};

}  // namespace detail

/// `co_await currentStopToken()`: the token that cancels the awaiting task.
inline detail::StopTokenAwaiter currentStopToken() noexcept {
    return {};
}

/// `co_await checkCancellation()`: throws `ZVCancelled` if the awaiting task has been cancelled.
inline detail::CancellationCheckAwaiter checkCancellation() noexcept {
    return {};
}

}  // namespace zorvane
