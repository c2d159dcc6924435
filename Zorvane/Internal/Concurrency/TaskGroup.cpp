#include "Zorvane/Internal/Concurrency/TaskGroup.hpp"

namespace zorvane::detail {

TaskGroupCore::TaskGroupCore(std::stop_token parent) : parentLink_(std::move(parent), StopAll{stopSource_}) {}

void TaskGroupCore::childStarted() {
    MutexLock lock(mutex_);
    ++running_;
}

void TaskGroupCore::childEnded() {
    MutexLock lock(mutex_);
    if (--running_ > 0 || !waiter_) {
        return;
    }
    const Continuation<> waiter = *std::exchange(waiter_, std::nullopt);
    lock.unlock();
    waiter.resume();
}

void TaskGroupCore::fail(std::exception_ptr error) {
    {
        MutexLock lock(mutex_);
        if (!firstFailure_) {
            firstFailure_ = std::move(error);
        }
    }
    stopSource_.request_stop();
}

void TaskGroupCore::rethrowFirstFailure() {
    std::exception_ptr failure;
    {
        MutexLock lock(mutex_);
        failure = std::exchange(firstFailure_, nullptr);
    }
    if (failure) {
        std::rethrow_exception(std::move(failure));
    }
}

Task<> TaskGroupCore::allEnded(std::shared_ptr<TaskGroupCore> core) {
    auto [continuation, waiter] = makeContinuation();
    {
        MutexLock lock(core->mutex_);
        if (core->running_ > 0) {
            core->waiter_ = continuation;
        } else {
            continuation.resume();
        }
    }
    co_await std::move(waiter).ignoringCancellation();
    core->rethrowFirstFailure();
}

}  // namespace zorvane::detail
