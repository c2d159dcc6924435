#include "Zorvane/Internal/Concurrency/Continuation.hpp"

#include <stdexcept>

#include "Zorvane/Internal/Concurrency/Executor.hpp"
#include "Zorvane/Internal/Concurrency/Trampoline.hpp"

namespace zorvane::detail {

void SuspendedCoroutine::resume() && {
    if (handle) {
        executor->post([coroutine = handle] { Trampoline::run(coroutine); });
    }
}

std::exception_ptr droppedContinuationError() {
    return std::make_exception_ptr(std::logic_error("A continuation was dropped without being resumed."));
}

}  // namespace zorvane::detail
