// Structured parallelism: child tasks that all end before their parent goes on.
#pragma once

#include <iterator>
#include <memory>
#include <optional>
#include <stop_token>
#include <type_traits>
#include <utility>
#include <vector>

#include "Zorvane/Internal/Concurrency/Continuation.hpp"
#include "Zorvane/Internal/Concurrency/CurrentTask.hpp"
#include "Zorvane/Internal/Concurrency/Task.hpp"
#include "Zorvane/Internal/Concurrency/ThreadSafety.hpp"

namespace zorvane {

namespace detail {

/// Counts the children of a group, links their cancellation, and keeps the first failure. Any thread.
class TaskGroupCore {
  public:
    explicit TaskGroupCore(std::stop_token parent);

    std::stop_token stopToken() const { return stopSource_.get_token(); }
    void requestStop() { stopSource_.request_stop(); }
    void childStarted();
    void childEnded();
    /// Keeps the error if it is the first, and cancels all children.
    void fail(std::exception_ptr error);
    /// Waits for all children, also when the waiting task is cancelled, then throws the first failure.
    static Task<> allEnded(std::shared_ptr<TaskGroupCore> core);

  private:
    void rethrowFirstFailure();

    struct StopAll {
        std::stop_source source;
        void operator()() { source.request_stop(); }
    };

    std::stop_source stopSource_;
    std::stop_callback<StopAll> parentLink_;
    Mutex mutex_;
    std::size_t running_ ZV_GUARDED_BY(mutex_) = 0;
    std::exception_ptr firstFailure_ ZV_GUARDED_BY(mutex_);
    std::optional<Continuation<>> waiter_ ZV_GUARDED_BY(mutex_);
};

}  // namespace detail

/// Child tasks of one parent, run in parallel on the pool.
///
///     TaskGroup<Frame> group(co_await currentStopToken());
///     group.add(load(first));
///     group.add(load(second));
///     std::vector<Frame> frames = co_await std::move(group).results();
///
/// The first child that throws, or the parent's cancellation, cancels all children. A group belongs to its parent task
/// and is consumed with `results` before anything that a child refers to goes away; destroying it unconsumed cancels
/// the children but can't wait for them.
template <class T = void>
class TaskGroup {
  public:
    using Results = std::conditional_t<std::is_void_v<T>, void, std::vector<typename ZVOutcome<T>::Value>>;

    explicit TaskGroup(std::stop_token parent) : state_(std::make_shared<State>(std::move(parent))) {}
    TaskGroup(TaskGroup&&) noexcept = default;
    TaskGroup& operator=(TaskGroup&&) = delete;
    ~TaskGroup() {
        if (state_) {
            state_->core.requestStop();
        }
    }

    /// Starts a child at once.
    void add(Task<T> task) {
        const std::size_t slot = state_->reserve();
        state_->core.childStarted();
        auto completion = [state = state_, slot](ZVOutcome<T> outcome) { state->finish(slot, std::move(outcome)); };
        detail::rootTask(std::move(task), std::move(completion)).start({nullptr, state_->core.stopToken()});
    }

    /// Fails the group as a throwing child would.
    void fail(std::exception_ptr error) { state_->core.fail(std::move(error)); }

    /// Waits until all children have ended, also the cancelled ones, then gives their values in the order of `add`, or
    /// throws the first failure.
    Task<Results> results() && { return resultsOf(std::move(state_)); }

  private:
    using Slot = typename ZVOutcome<T>::Value;

    struct State {
        detail::TaskGroupCore core;
        Mutex mutex;
        std::vector<std::optional<Slot>> values ZV_GUARDED_BY(mutex);

        explicit State(std::stop_token parent) : core(std::move(parent)) {}

        std::size_t reserve() {
            MutexLock lock(mutex);
            values.emplace_back();
            return values.size() - 1;
        }

        void finish(std::size_t slot, ZVOutcome<T> outcome) {
            if (!outcome.isSuccess()) {
                core.fail(outcome.error());
            } else if constexpr (!std::is_void_v<T>) {
                MutexLock lock(mutex);
                values[slot].emplace(std::move(outcome).value());
            }
            core.childEnded();
        }
    };

    static Task<Results> resultsOf(std::shared_ptr<State> state) {
        std::shared_ptr<detail::TaskGroupCore> core(state, &state->core);
        co_await detail::TaskGroupCore::allEnded(core);
        if constexpr (!std::is_void_v<T>) {
            Results results;
            MutexLock lock(state->mutex);
            results.reserve(state->values.size());
            for (auto& value : state->values) {
                results.push_back(std::move(*value));
            }
            co_return results;
        }
    }

    std::shared_ptr<State> state_;
};

namespace detail {

/// What the task of one input gives.
template <class Inputs, class MakeTask>
using ChildResult =
    typename std::invoke_result_t<MakeTask&, decltype(*std::begin(std::declval<Inputs&>()))>::ResultType;

/// Starts one child per input. If `makeTask` throws, the children begun are cancelled and still awaited.
template <class T, class Inputs, class MakeTask>
void addChildren(TaskGroup<T>& group, Inputs& inputs, MakeTask& makeTask) {
    try {
        for (auto& input : inputs) {
            group.add(makeTask(input));
        }
    } catch (...) {
        group.fail(std::current_exception());
    }
}

}  // namespace detail

// The three helpers keep `inputs` and `makeTask` until all children have ended, so `makeTask` may be a coroutine lambda
// with captures and may take its input by reference. Pass a named lambda (`docs/design/concurrency.md` says why).

/// Runs `makeTask(input)` for all inputs in parallel and gives the results in the order of the inputs. The first
/// failure cancels the other tasks, waits for them, and is rethrown.
template <class Inputs, class MakeTask>
Task<std::vector<detail::ChildResult<Inputs, MakeTask>>> concurrentMap(Inputs inputs, MakeTask makeTask) {
    TaskGroup<detail::ChildResult<Inputs, MakeTask>> group(co_await currentStopToken());
    detail::addChildren(group, inputs, makeTask);
    co_return co_await std::move(group).results();
}

/// `concurrentMap` with lists as results, joined in the order of the inputs.
template <class Inputs, class MakeTask>
Task<detail::ChildResult<Inputs, MakeTask>> concurrentFlatMap(Inputs inputs, MakeTask makeTask) {
    auto lists = co_await concurrentMap(std::move(inputs), std::move(makeTask));
    detail::ChildResult<Inputs, MakeTask> joined;
    for (auto& list : lists) {
        joined.insert(joined.end(), std::make_move_iterator(list.begin()), std::make_move_iterator(list.end()));
    }
    co_return joined;
}

/// Runs `makeTask(input)` for all inputs in parallel and waits for all. The first failure cancels the other tasks,
/// waits for them, and is rethrown.
template <class Inputs, class MakeTask>
Task<> concurrentForEach(Inputs inputs, MakeTask makeTask) {
    TaskGroup<> group(co_await currentStopToken());
    detail::addChildren(group, inputs, makeTask);
    co_await std::move(group).results();
}

}  // namespace zorvane
