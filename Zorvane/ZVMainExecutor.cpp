#include "Zorvane/ZVMainExecutor.hpp"

#include "Zorvane/Internal/Concurrency/MainExecutor.hpp"

namespace zorvane {

void ZVMainExecutor::install(Hook hook) {
    MainExecutor::shared()->install(std::move(hook));
}

void ZVMainExecutor::post(std::function<void()> job) {
    MainExecutor::shared()->post(std::move(job));
}

bool ZVMainExecutor::isCurrent() {
    return MainExecutor::shared()->isCurrent();
}

}  // namespace zorvane
