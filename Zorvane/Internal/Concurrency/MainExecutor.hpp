// The executor behind `ZVMainExecutor` and `Executor::main()`.
#pragma once

#include <mutex>

#include "Zorvane/Internal/Concurrency/Executor.hpp"
#include "Zorvane/ZVMainExecutor.hpp"

namespace zorvane {

class MainExecutor final : public Executor {
  public:
    static const std::shared_ptr<MainExecutor>& shared();

    void post(std::function<void()> job) override;
    void install(ZVMainExecutor::Hook hook);

  private:
    class OwnThread;

    OwnThread& ownThread();

    std::mutex mutex_;  // guards all below
    ZVMainExecutor::Hook hook_;
    OwnThread* ownThread_ = nullptr;  // started at its first job, then there until the process ends
};

}  // namespace zorvane
