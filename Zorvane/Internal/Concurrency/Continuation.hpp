// The bridge from callbacks to coroutines: any thread resumes, once, what one coroutine waits for.
#pragma once

#include <coroutine>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <stop_token>
#include <utility>

#include "Zorvane/Internal/Concurrency/Task.hpp"

namespace zorvane {

template <class T>
class Waiter;

namespace detail {

/// A suspended coroutine and the executor it resumes on.
struct SuspendedCoroutine {
    std::coroutine_handle<> handle;
    std::shared_ptr<Executor> executor;

    /// Posts the coroutine to its executor, if there is one to resume.
    void resume() &&;
};

/// The error of a continuation whose last copy went away unused.
std::exception_ptr droppedContinuationError();

template <class T>
class ContinuationState {
  public:
    bool resume(ZVOutcome<T> outcome) {
        std::unique_lock lock(mutex_);
        if (outcome_) {
            return false;
        }
        outcome_.emplace(std::move(outcome));
        SuspendedCoroutine waiter = std::exchange(waiter_, {});
        lock.unlock();
        std::move(waiter).resume();
        return true;
    }

    /// False if there is an outcome already: the coroutine goes on at once.
    bool suspend(SuspendedCoroutine waiter) {
        std::lock_guard lock(mutex_);
        if (outcome_) {
            return false;
        }
        waiter_ = std::move(waiter);
        return true;
    }

    ZVOutcome<T> takeOutcome() {
        std::lock_guard lock(mutex_);
        return std::move(*outcome_);
    }

  private:
    std::mutex mutex_;  // guards all below
    std::optional<ZVOutcome<T>> outcome_;
    SuspendedCoroutine waiter_;
};

}  // namespace detail

/// The resuming side. Copies stand for the same wait; any thread may use any copy at any time, also before the wait has
/// begun. The first resumption wins. If the last copy goes away unused, the wait throws `std::logic_error`, so that
/// nothing waits for ever.
template <class T = void>
class Continuation {
  public:
    /// Resumes the waiter with a value (none if `T` is `void`) on its own executor. False if another call came first.
    template <class... Value>
    bool resume(Value&&... value) const {
        return resumer_->state->resume(ZVOutcome<T>::success(std::forward<Value>(value)...));
    }

    /// Resumes the waiter by throwing `error`. False if another call came first.
    bool resumeThrowing(std::exception_ptr error) const {
        return resumer_->state->resume(ZVOutcome<T>::failure(std::move(error)));
    }

    template <class Error>
    bool resumeThrowing(Error error) const {
        return resumeThrowing(std::make_exception_ptr(std::move(error)));
    }

  private:
    template <class U>
    friend std::pair<Continuation<U>, Waiter<U>> makeContinuation();

    struct Resumer {
        std::shared_ptr<detail::ContinuationState<T>> state;
        explicit Resumer(std::shared_ptr<detail::ContinuationState<T>> shared) : state(std::move(shared)) {}
        Resumer(const Resumer&) = delete;
        Resumer& operator=(const Resumer&) = delete;
        ~Resumer() { state->resume(ZVOutcome<T>::failure(detail::droppedContinuationError())); }
    };

    explicit Continuation(std::shared_ptr<detail::ContinuationState<T>> state)
        : resumer_(std::make_shared<Resumer>(std::move(state))) {}

    std::shared_ptr<Resumer> resumer_;
};

/// The waiting side: `co_await std::move(waiter)`, once, in a `Task`. When the task is cancelled, also before the wait,
/// the wait throws `ZVCancelled`, unless said otherwise.
template <class T = void>
class [[nodiscard]] Waiter {
  public:
    /// On cancellation calls `handler` instead, once, on the cancelling thread; the wait goes on until the continuation
    /// is resumed, by the handler or by others. The handler must not wait for the waiting task.
    void onCancel(std::function<void()> handler) { onCancel_ = std::move(handler); }

    /// Cancellation doesn't end the wait.
    Waiter&& ignoringCancellation() && {
        onCancel_ = nullptr;
        return std::move(*this);
    }

    class Awaiter;
    Awaiter operator co_await() && { return Awaiter(std::move(state_), std::move(onCancel_)); }

  private:
    template <class U>
    friend std::pair<Continuation<U>, Waiter<U>> makeContinuation();

    explicit Waiter(std::shared_ptr<detail::ContinuationState<T>> state)
        : state_(std::move(state)), onCancel_([waited = state_] {
              waited->resume(ZVOutcome<T>::failure(std::make_exception_ptr(ZVCancelled())));
          }) {}

    std::shared_ptr<detail::ContinuationState<T>> state_;
    std::function<void()> onCancel_;
};

template <class T>
class Waiter<T>::Awaiter {
  public:
    Awaiter(std::shared_ptr<detail::ContinuationState<T>> state, std::function<void()> onCancel)
        : state_(std::move(state)), onCancel_(std::move(onCancel)) {}

    bool await_ready() const noexcept { return false; }

    template <std::derived_from<detail::TaskPromiseBase> Promise>
    bool await_suspend(std::coroutine_handle<Promise> coroutine) {
        const detail::TaskContext& context = coroutine.promise().context;
        // Before `suspend`, after which another thread may resume the coroutine and destroy this awaiter.
        if (onCancel_) {
            cancellation_.emplace(context.stopToken, std::move(onCancel_));
        }
        return state_->suspend({coroutine, context.executor});
    }

    T await_resume() {
        cancellation_.reset();
        return state_->takeOutcome().value();
    }

  private:
    std::shared_ptr<detail::ContinuationState<T>> state_;
    std::function<void()> onCancel_;
    std::optional<std::stop_callback<std::function<void()>>> cancellation_;
};

/// A new wait: `auto [continuation, waiter] = makeContinuation<int>();`
template <class T = void>
std::pair<Continuation<T>, Waiter<T>> makeContinuation() {
    auto state = std::make_shared<detail::ContinuationState<T>>();
    return {Continuation<T>(state), Waiter<T>(state)};
}

}  // namespace zorvane
