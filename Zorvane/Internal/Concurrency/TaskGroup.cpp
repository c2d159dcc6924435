#include "Zorvane/Internal/Concurrency/TaskGroup.hpp"

namespace zorvane::detail {

TaskGroupCore::TaskGroupCore(std::stop_token parent) : parentLink_(std::move(parent), StopAll{stopSource_}) {}

void TaskGroupCore::childStarted() {
    std::lock_guard lock(mutex_);
    ++running_;
}

void TaskGroupCore::childEnded() {
    std::unique_lock lock(mutex_);
    if (--running_ > 0 || !waiter_) {
        return;
    }
    const Continuation<> waiter = *std::exchange(waiter_, std::nullopt);
    lock.unlock();
    waiter.resume();
}

void TaskGroupCore::fail(std::exception_ptr error) {
    {
        std::lock_guard lock(mutex_);
        if (!firstFailure_) {
            firstFailure_ = std::move(error);
        }
    }
    stopSource_.request_stop();
}

Task<> TaskGroupCore::allEnded(std::shared_ptr<TaskGroupCore> core) {
    auto [continuation, waiter] = makeContinuation();
    {
        std::lock_guard lock(core->mutex_);
        if (core->running_ > 0) {
            core->waiter_ = continuation;
        } else {
            continuation.resume();
        }
    }
    co_await std::move(waiter).ignoringCancellation();
    if (core->firstFailure_) {
        std::rethrow_exception(std::exchange(core->firstFailure_, nullptr));
    }
}

}  // namespace zorvane::detail
