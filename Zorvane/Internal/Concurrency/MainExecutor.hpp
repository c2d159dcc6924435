// The executor behind `ZVMainExecutor` and `Executor::main()`.
#pragma once

#include "Zorvane/Internal/Concurrency/Executor.hpp"
#include "Zorvane/Internal/Concurrency/ThreadSafety.hpp"
#include "Zorvane/ZVMainExecutor.hpp"

namespace zorvane {

class MainExecutor final : public Executor {
  public:
    static const std::shared_ptr<MainExecutor>& shared();

    void post(std::function<void()> job) override;
    void install(ZVMainExecutor::Hook hook);

  private:
    class OwnThread;

    OwnThread& ownThread() ZV_REQUIRES(mutex_);

    Mutex mutex_;
    ZVMainExecutor::Hook hook_ ZV_GUARDED_BY(mutex_);
    /// Started at its first job, then there until the process ends.
    OwnThread* ownThread_ ZV_GUARDED_BY(mutex_) = nullptr;
};

}  // namespace zorvane
