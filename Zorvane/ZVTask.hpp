// The library's suspending operations: lazy coroutine tasks that a host awaits, blocks on, or starts with a callback.
#pragma once

#include <concepts>
#include <coroutine>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <type_traits>
#include <utility>

#include "Zorvane/ZVOutcome.hpp"

namespace zorvane {

class Executor;
template <class T>
class ZVTask;

namespace detail {

/// Where a coroutine runs and what cancels it. A child takes over both from the coroutine that awaits it.
struct TaskContext {
    std::shared_ptr<Executor> executor;
    std::stop_token stopToken;
};

/// What of a task's promise does not depend on its result.
///
/// Resumption never recurses: an awaiting or a finishing coroutine leaves the one to go on with in a slot of the
/// thread, returns to the loop at the bottom of the stack, and the loop resumes it. A coroutine of another executor is
/// posted there instead.
class TaskPromiseBase {
  public:
    TaskContext context;

    std::suspend_always initial_suspend() const noexcept { return {}; }

    /// Starts `self` on behalf of the suspended `parent`, whose context it takes over where it has none of its own.
    void startAwaitedBy(std::coroutine_handle<> parent, TaskPromiseBase& parentPromise, std::coroutine_handle<> self);
    /// The same for a coroutine of a foreign type; it is resumed on the executor this task ends on.
    void startAwaitedBy(std::coroutine_handle<> parent, std::coroutine_handle<> self);
    /// Goes on with the parent. This task may be gone when it returns.
    void resumeParent() noexcept;

  private:
    std::coroutine_handle<> parent_;
    TaskPromiseBase* parentPromise_ = nullptr;
};

struct TaskFinalAwaiter {
    bool await_ready() const noexcept { return false; }
    template <class Promise>
    void await_suspend(std::coroutine_handle<Promise> finished) const noexcept {
        finished.promise().resumeParent();
    }
    void await_resume() const noexcept {}
};

template <class T>
class TaskPromiseResult : public TaskPromiseBase {
  public:
    template <class Value = T>
    void return_value(Value&& value) {
        outcome_.emplace(ZVOutcome<T>::success(std::forward<Value>(value)));
    }
    void unhandled_exception() { outcome_.emplace(ZVOutcome<T>::failure(std::current_exception())); }
    ZVOutcome<T> takeOutcome() { return std::move(*outcome_); }

  private:
    std::optional<ZVOutcome<T>> outcome_;
};

template <>
class TaskPromiseResult<void> : public TaskPromiseBase {
  public:
    void return_void() noexcept {}
    void unhandled_exception() noexcept { error_ = std::current_exception(); }
    ZVOutcome<> takeOutcome() { return error_ ? ZVOutcome<>::failure(std::move(error_)) : ZVOutcome<>::success(); }

  private:
    std::exception_ptr error_;
};

template <class T>
class TaskPromise : public TaskPromiseResult<T> {
  public:
    ZVTask<T> get_return_object() noexcept;
    TaskFinalAwaiter final_suspend() const noexcept { return {}; }
};

/// A coroutine that nobody awaits: it destroys itself at its end.
struct RootTask {
    struct promise_type : TaskPromiseBase {
        RootTask get_return_object() noexcept { return {std::coroutine_handle<promise_type>::from_promise(*this)}; }
        std::suspend_never final_suspend() const noexcept { return {}; }
        void return_void() const noexcept {}
        void unhandled_exception() const noexcept { std::terminate(); }
    };

    /// Runs it in `context`; an empty executor stands for the pool.
    void start(TaskContext context);

    std::coroutine_handle<promise_type> handle;
};

/// Lets one thread wait for another.
class BlockingWait {
  public:
    class Event;

    /// Throws `std::logic_error` inside a task, where blocking could wait for itself.
    BlockingWait();
    const std::shared_ptr<Event>& event() const { return event_; }
    static void signal(Event& event);
    void wait();

  private:
    std::shared_ptr<Event> event_;
};

void postToMainExecutor(std::function<void()> job);

}  // namespace detail

/// An operation that may suspend, and its one result.
///
/// A task does nothing until it is consumed, once, in one of three ways: awaited with `co_await std::move(task)`,
/// blocked on with `get`, or started with `start`. A task that is dropped unconsumed never runs.
///
/// A coroutine resumes on the executor it was running on; the outermost task runs on the library's thread pool. A task
/// inherits the stop token of the coroutine that awaits it: when stop is requested, its waits throw `ZVCancelled`. An
/// awaiting coroutine must not be destroyed before the task has ended.
///
/// Objects that the operation belongs to must outlive it, unless the operation says that it keeps them alive.
template <class T = void>
class [[nodiscard]] ZVTask {
  public:
    using promise_type = detail::TaskPromise<T>;
    using ResultType = T;

    ZVTask(ZVTask&& other) noexcept : coroutine_(std::exchange(other.coroutine_, nullptr)) {}
    ZVTask& operator=(ZVTask&& other) noexcept {
        std::swap(coroutine_, other.coroutine_);
        return *this;
    }
    ~ZVTask() {
        if (coroutine_) {
            coroutine_.destroy();
        }
    }

    /// Runs the task and blocks the calling thread until it has ended; returns its value or throws what it threw.
    /// Throws `std::logic_error` if called inside a task: await it there instead. Must not be called on the main
    /// executor by a host whose task needs that loop.
    T get(std::stop_token stopToken = {}) &&;

    /// Runs the task; `completion` gets the outcome on the main executor. Returns at once. Any thread.
    void start(std::function<void(ZVOutcome<T>)> completion, std::stop_token stopToken = {}) &&;

    /// The same task with its body on `executor`, which it keeps alive. The awaiting coroutine still resumes on its
    /// own.
    ZVTask on(std::shared_ptr<Executor> executor) && {
        coroutine_.promise().context.executor = std::move(executor);
        return std::move(*this);
    }

    class OutcomeAwaiter;
    class ValueAwaiter;

    /// `co_await std::move(task)` gives the value or throws.
    ValueAwaiter operator co_await() && noexcept { return ValueAwaiter(std::move(*this)); }

    /// `co_await std::move(task).outcome()` gives the outcome and never throws.
    OutcomeAwaiter outcome() && noexcept { return OutcomeAwaiter(std::move(*this)); }

  private:
    friend promise_type;
    explicit ZVTask(std::coroutine_handle<promise_type> coroutine) noexcept : coroutine_(coroutine) {}

    std::coroutine_handle<promise_type> coroutine_;
};

/// Owns the task while it runs, so that its frame and arguments are gone when the awaiting expression ends.
template <class T>
class [[nodiscard]] ZVTask<T>::OutcomeAwaiter {
  public:
    explicit OutcomeAwaiter(ZVTask task) noexcept : task_(std::move(task)) {}

    bool await_ready() const noexcept { return false; }

    template <class Promise>
    void await_suspend(std::coroutine_handle<Promise> parent) {
        auto& promise = task_.coroutine_.promise();
        if constexpr (std::derived_from<Promise, detail::TaskPromiseBase>) {
            promise.startAwaitedBy(parent, parent.promise(), task_.coroutine_);
        } else {
            promise.startAwaitedBy(parent, task_.coroutine_);
        }
    }

    ZVOutcome<T> await_resume() { return task_.coroutine_.promise().takeOutcome(); }

  private:
    ZVTask task_;
};

template <class T>
class [[nodiscard]] ZVTask<T>::ValueAwaiter : public OutcomeAwaiter {
  public:
    using OutcomeAwaiter::OutcomeAwaiter;
    T await_resume() { return OutcomeAwaiter::await_resume().value(); }
};

namespace detail {

template <class T>
ZVTask<T> TaskPromise<T>::get_return_object() noexcept {
    return ZVTask<T>(std::coroutine_handle<TaskPromise>::from_promise(*this));
}

/// Runs `task`, lets go of it, then calls `completion(ZVOutcome<T>)`, which must not throw.
template <class T, class Completion>
RootTask rootTask(ZVTask<T> task, Completion completion) {
    ZVOutcome<T> outcome = co_await std::move(task).outcome();
    completion(std::move(outcome));
}

}  // namespace detail

template <class T>
T ZVTask<T>::get(std::stop_token stopToken) && {
    detail::BlockingWait wait;
    std::optional<ZVOutcome<T>> result;
    auto completion = [&result, event = wait.event()](ZVOutcome<T> outcome) {
        result.emplace(std::move(outcome));
        detail::BlockingWait::signal(*event);
    };
    detail::rootTask(std::move(*this), std::move(completion)).start({nullptr, std::move(stopToken)});
    wait.wait();
    return std::move(*result).value();
}

template <class T>
void ZVTask<T>::start(std::function<void(ZVOutcome<T>)> completion, std::stop_token stopToken) && {
    auto deliver = [completion = std::move(completion)](ZVOutcome<T> outcome) mutable {
        auto shared = std::make_shared<ZVOutcome<T>>(std::move(outcome));
        detail::postToMainExecutor([completion = std::move(completion), shared] { completion(std::move(*shared)); });
    };
    detail::rootTask(std::move(*this), std::move(deliver)).start({nullptr, std::move(stopToken)});
}

}  // namespace zorvane
