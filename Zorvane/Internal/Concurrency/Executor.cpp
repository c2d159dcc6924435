#include "Zorvane/Internal/Concurrency/Executor.hpp"

#include <algorithm>
#include <asio/executor_work_guard.hpp>
#include <asio/io_context.hpp>
#include <asio/post.hpp>
#include <asio/strand.hpp>
#include <thread>
#include <utility>

#include "Zorvane/Internal/Concurrency/Activity.hpp"
#include "Zorvane/Internal/Concurrency/ThreadName.hpp"
#include "Zorvane/Internal/Concurrency/ThreadSafety.hpp"

namespace zorvane {

namespace {

thread_local const Executor* currentExecutor = nullptr;
thread_local bool onPoolThread = false;

// The threads behind the pool. Never destroyed and never joined: a job that is running or suspended when the process
// exits just ends with it, and nothing it uses is taken down under it.
class PoolThreads {
  public:
    static PoolThreads& shared() {
        static auto& threads = *new PoolThreads;
        return threads;
    }

    asio::io_context& context() { return context_; }

    void beginBlocking() {
        MutexLock lock(mutex_);
        if (++blocked_ >= threads_) {
            addThread();
        }
    }

    void endBlocking() {
        MutexLock lock(mutex_);
        --blocked_;
    }

  private:
    // Enough that a few long jobs (a file operation, a conversion) don't hold up the rest on a small machine.
    static constexpr unsigned fewestThreads = 4;

    PoolThreads() {
        MutexLock lock(mutex_);
        const unsigned count = std::max(fewestThreads, std::thread::hardware_concurrency());
        while (threads_ < count) {
            addThread();
        }
    }

    void addThread() ZV_REQUIRES(mutex_) {
        std::thread([this] {
            onPoolThread = true;
            setCurrentThreadName("zv.pool");
            context_.run();
        }).detach();
        ++threads_;
    }

    asio::io_context context_;
    asio::executor_work_guard<asio::io_context::executor_type> work_{context_.get_executor()};
    Mutex mutex_;
    unsigned threads_ ZV_GUARDED_BY(mutex_) = 0;
    unsigned blocked_ ZV_GUARDED_BY(mutex_) = 0;
};

class Pool final : public Executor {
  public:
    void post(std::function<void()> job) override {
        asio::post(PoolThreads::shared().context(), Job{{}, std::move(job), this});
    }

  private:
    struct Job {
        Activity activity;  // first, so that it ends after what the job has captured
        std::function<void()> run;
        const Executor* executor;

        void operator()() {
            CurrentScope current(executor);
            run();
        }
    };
};

class Strand final : public Executor {
  public:
    explicit Strand(std::string label)
        : label_(std::make_shared<const std::string>(std::move(label))),
          strand_(asio::make_strand(PoolThreads::shared().context())) {}

    void post(std::function<void()> job) override { asio::post(strand_, Job{{}, label_, std::move(job), this}); }

  private:
    struct Job {
        Activity activity;
        std::shared_ptr<const std::string> label;
        std::function<void()> run;
        const Executor* executor;

        void operator()() {
            ThreadNameScope name(*label);
            CurrentScope current(executor);
            run();
        }
    };

    const std::shared_ptr<const std::string> label_;
    asio::strand<asio::io_context::executor_type> strand_;
};

}  // namespace

Executor::CurrentScope::CurrentScope(const Executor* executor) : outer_(std::exchange(currentExecutor, executor)) {}

Executor::CurrentScope::~CurrentScope() {
    currentExecutor = outer_;
}

bool Executor::isCurrent() const {
    return currentExecutor == this;
}

std::shared_ptr<Executor> Executor::pool() {
    static const auto& pool = *new std::shared_ptr<Executor>(std::make_shared<Pool>());
    return pool;
}

std::shared_ptr<Executor> Executor::makeStrand(std::string label) {
    return std::make_shared<Strand>(std::move(label));
}

PoolBlockingScope::PoolBlockingScope() {
    if (onPoolThread) {
        PoolThreads::shared().beginBlocking();
    }
}

PoolBlockingScope::~PoolBlockingScope() {
    if (onPoolThread) {
        PoolThreads::shared().endBlocking();
    }
}

}  // namespace zorvane
