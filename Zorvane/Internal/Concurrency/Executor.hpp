// Where jobs and coroutines run: the pool, strands on it, and the main executor.
#pragma once

#include <functional>
#include <memory>
#include <string>

namespace zorvane {

/// Runs jobs. All operations may be called on any thread. A job must not throw; one that blocks on the pool or a strand
/// does so inside a `PoolBlockingScope`.
class Executor {
  public:
    virtual ~Executor() = default;

    /// Queues `job`; never runs it inside this call. The job runs also when the executor itself has been let go.
    virtual void post(std::function<void()> job) = 0;

    /// True if the calling thread is running a job of this executor.
    bool isCurrent() const;

    /// The process's thread pool: jobs run in parallel, in no promised order.
    static std::shared_ptr<Executor> pool();

    /// A new strand on the pool: jobs run one at a time, in the order of posting. A serialised object owns one. `label`
    /// names the thread while one of its jobs runs.
    static std::shared_ptr<Executor> makeStrand(std::string label);

    /// One thread of the library, or the host's own loop if it has installed one (`ZVMainExecutor`). In order.
    static std::shared_ptr<Executor> main();

  protected:
    /// Marks the calling thread as running a job of `executor`; compared only, so the executor may end meanwhile.
    class CurrentScope {
      public:
        explicit CurrentScope(const Executor* executor);
        ~CurrentScope();
        CurrentScope(const CurrentScope&) = delete;
        CurrentScope& operator=(const CurrentScope&) = delete;

      private:
        const Executor* outer_;
    };
};

/// Held by a job while it blocks. If all threads of the pool were blocked, the pool takes on another one, so that the
/// jobs they wait for can run. Does nothing on other threads.
class PoolBlockingScope {
  public:
    PoolBlockingScope();
    ~PoolBlockingScope();
    PoolBlockingScope(const PoolBlockingScope&) = delete;
    PoolBlockingScope& operator=(const PoolBlockingScope&) = delete;
};

}  // namespace zorvane
