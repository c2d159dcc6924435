#include "Zorvane/ZVTask.hpp"

#include <condition_variable>
#include <mutex>
#include <stdexcept>

#include "Zorvane/Internal/Concurrency/Executor.hpp"
#include "Zorvane/Internal/Concurrency/Trampoline.hpp"

namespace zorvane {

namespace detail {

namespace {

// Takes its own share of the executor: the coroutine may run, end and let go of it before `post` returns.
void resumeOn(std::shared_ptr<Executor> executor, std::coroutine_handle<> coroutine) {
    executor->post([coroutine] { Trampoline::run(coroutine); });
}

}  // namespace

void TaskPromiseBase::startAwaitedBy(std::coroutine_handle<> parent, TaskPromiseBase& parentPromise,
                                     std::coroutine_handle<> self) {
    parent_ = parent;
    parentPromise_ = &parentPromise;
    context.stopToken = parentPromise.context.stopToken;
    if (!context.executor) {
        context.executor = parentPromise.context.executor;
    }
    if (context.executor == parentPromise.context.executor) {
        Trampoline::resumeNext(self);
    } else {
        resumeOn(context.executor, self);
    }
}

void TaskPromiseBase::startAwaitedBy(std::coroutine_handle<> parent, std::coroutine_handle<> self) {
    parent_ = parent;
    if (!context.executor) {
        context.executor = Executor::pool();
    }
    resumeOn(context.executor, self);
}

void TaskPromiseBase::resumeParent() noexcept {
    if (!parentPromise_ || parentPromise_->context.executor == context.executor) {
        Trampoline::resumeNext(parent_);
    } else {
        resumeOn(parentPromise_->context.executor, parent_);
    }
}

void RootTask::start(TaskContext context) {
    if (!context.executor) {
        context.executor = Executor::pool();
    }
    auto executor = context.executor;
    handle.promise().context = std::move(context);
    resumeOn(std::move(executor), handle);
}

class BlockingWait::Event {
  public:
    void signal() {
        std::lock_guard lock(mutex_);
        signalled_ = true;
        condition_.notify_one();
    }

    void wait() {
        std::unique_lock lock(mutex_);
        condition_.wait(lock, [this] { return signalled_; });
    }

  private:
    std::mutex mutex_;
    std::condition_variable condition_;
    bool signalled_ = false;
};

BlockingWait::BlockingWait() : event_(std::make_shared<Event>()) {
    if (Trampoline::isRunning()) {
        throw std::logic_error("ZVTask::get() was called inside a task, where it could wait for itself. Use co_await.");
    }
}

void BlockingWait::signal(Event& event) {
    event.signal();
}

void BlockingWait::wait() {
    PoolBlockingScope scope;
    event_->wait();
}

void postToMainExecutor(std::function<void()> job) {
    Executor::main()->post(std::move(job));
}

}  // namespace detail

}  // namespace zorvane
