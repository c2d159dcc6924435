#include "Zorvane/Internal/Concurrency/MainExecutor.hpp"

#include <asio/executor_work_guard.hpp>
#include <asio/io_context.hpp>
#include <asio/post.hpp>
#include <thread>
#include <utility>

#include "Zorvane/Internal/Concurrency/Activity.hpp"
#include "Zorvane/Internal/Concurrency/ThreadName.hpp"

namespace zorvane {

class MainExecutor::OwnThread {
  public:
    OwnThread() {
        std::thread([this] {
            setCurrentThreadName("zv.main");
            context_.run();
        }).detach();
    }

    void post(std::function<void()> job) { asio::post(context_, CountedJob{{}, std::move(job)}); }

  private:
    struct CountedJob {
        Activity activity;  // first, so that it ends after what the job has captured
        std::function<void()> run;

        void operator()() { run(); }
    };

    asio::io_context context_{1};
    asio::executor_work_guard<asio::io_context::executor_type> work_{context_.get_executor()};
};

const std::shared_ptr<MainExecutor>& MainExecutor::shared() {
    static const auto& executor = *new auto(std::make_shared<MainExecutor>());
    return executor;
}

void MainExecutor::post(std::function<void()> job) {
    auto marked = [this, job = std::move(job)] {
        CurrentScope current(this);
        job();
    };
    MutexLock lock(mutex_);
    if (!hook_) {
        ownThread().post(std::move(marked));
        return;
    }
    // A copy, because the host's loop may call back into the library. Jobs of a host's loop are not counted as in
    // flight: nobody but the host knows when it runs them.
    const auto hook = hook_;
    lock.unlock();
    hook(std::move(marked));
}

void MainExecutor::install(ZVMainExecutor::Hook hook) {
    MutexLock lock(mutex_);
    std::swap(hook_, hook);
}

MainExecutor::OwnThread& MainExecutor::ownThread() {
    if (!ownThread_) {
        ownThread_ = new OwnThread;
    }
    return *ownThread_;
}

std::shared_ptr<Executor> Executor::main() {
    return MainExecutor::shared();
}

}  // namespace zorvane
