// The loop that resumes coroutines one after another, so that no chain of them grows the stack.
#pragma once

#include <coroutine>

namespace zorvane {

class Trampoline {
  public:
    /// Resumes `coroutine`, then each one that the resumed one leaves behind with `resumeNext`, until none is left.
    static void run(std::coroutine_handle<> coroutine);

    /// Called by a coroutine on this thread as it suspends: `coroutine` is resumed once it has returned to the loop.
    static void resumeNext(std::coroutine_handle<> coroutine);

    /// True inside `run` on this thread.
    static bool isRunning();
};

}  // namespace zorvane
