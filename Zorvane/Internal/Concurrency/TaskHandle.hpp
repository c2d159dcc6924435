// Unstructured tasks: started now, awaited later or never.
#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <stop_token>
#include <utility>
#include <vector>

#include "Zorvane/Internal/Concurrency/Continuation.hpp"
#include "Zorvane/Internal/Concurrency/Executor.hpp"
#include "Zorvane/Internal/Concurrency/Task.hpp"

namespace zorvane {

/// A task that runs by itself. Copies stand for the same task; when all are gone, it runs on. Any thread.
template <class T = void>
class TaskHandle {
  public:
    /// Stands for no task: `cancel` does nothing.
    TaskHandle() = default;

    explicit operator bool() const noexcept { return state_ != nullptr; }

    /// Requests the task's stop token to stop; its next or present wait throws. Doesn't wait for the task.
    void cancel() const {
        if (state_) {
            state_->stopSource.request_stop();
        }
    }

    /// Waits for the task's end and gives a copy of its value, or throws what it threw. Cancelling the waiting task
    /// ends the wait and leaves this task alone. The handle may go meanwhile.
    Task<T> value() const { return valueOf(state_); }

    /// Waits for the task's end, whatever its outcome.
    Task<> finished() const { return endOf(state_); }

    /// Cancels the task and blocks until it has ended and let go of all that it used. For destructors: whoever is
    /// destroyed by a task can't await another. Any thread that the task can do without.
    void cancelAndJoin() const {
        if (state_) {
            state_->stopSource.request_stop();
            state_->waitForEnd();
        }
    }

  private:
    struct State {
        std::stop_source stopSource;
        std::condition_variable ended;
        std::mutex mutex;  // guards the two below
        std::optional<ZVOutcome<T>> outcome;
        std::vector<Continuation<>> waiters;

        void finish(ZVOutcome<T> result) {
            std::unique_lock lock(mutex);
            outcome.emplace(std::move(result));
            const auto resumed = std::exchange(waiters, {});
            lock.unlock();
            ended.notify_all();
            for (const auto& waiter : resumed) {
                waiter.resume();
            }
        }

        /// Has `waiter` resumed at the end; at once if that has come.
        void addWaiter(Continuation<> waiter) {
            std::unique_lock lock(mutex);
            if (!outcome) {
                waiters.push_back(std::move(waiter));
                return;
            }
            lock.unlock();
            waiter.resume();
        }

        void waitForEnd() {
            const PoolBlockingScope blocking;
            std::unique_lock lock(mutex);
            ended.wait(lock, [this] { return outcome.has_value(); });
        }
    };

    template <class U>
    friend TaskHandle<U> spawn(Task<U> task, std::shared_ptr<Executor> executor);

    explicit TaskHandle(std::shared_ptr<State> state) : state_(std::move(state)) {}

    static Task<> endOf(std::shared_ptr<State> state) {
        auto [continuation, waiter] = makeContinuation();
        state->addWaiter(std::move(continuation));
        co_await std::move(waiter);
    }

    static Task<T> valueOf(std::shared_ptr<State> state) {
        co_await endOf(state);
        // The outcome never changes again, so it is read without the lock.
        co_return std::as_const(*state->outcome).value();
    }

    std::shared_ptr<State> state_;
};

/// Starts `task` on `executor` at once and returns a handle to it. The task has a stop token of its own and inherits
/// nothing from the caller; it must keep alive what it uses.
template <class T>
TaskHandle<T> spawn(Task<T> task, std::shared_ptr<Executor> executor = Executor::pool()) {
    auto state = std::make_shared<typename TaskHandle<T>::State>();
    auto completion = [state](ZVOutcome<T> outcome) { state->finish(std::move(outcome)); };
    detail::rootTask(std::move(task), std::move(completion))
        .start({std::move(executor), state->stopSource.get_token()});
    return TaskHandle<T>(std::move(state));
}

}  // namespace zorvane
