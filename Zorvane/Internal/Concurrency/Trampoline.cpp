#include "Zorvane/Internal/Concurrency/Trampoline.hpp"

#include <utility>

namespace zorvane {

namespace {

struct Loop {
    std::coroutine_handle<> next;
};

thread_local Loop* currentLoop = nullptr;

}  // namespace

void Trampoline::run(std::coroutine_handle<> coroutine) {
    Loop loop;
    Loop* const outer = std::exchange(currentLoop, &loop);
    while (coroutine) {
        coroutine.resume();
        coroutine = std::exchange(loop.next, nullptr);
    }
    currentLoop = outer;
}

void Trampoline::resumeNext(std::coroutine_handle<> coroutine) {
    // Without a loop, or when a coroutine of a foreign type was resumed within one and the slot is taken, this call
    // becomes the loop: the suspended caller is not touched after it.
    if (!currentLoop || currentLoop->next) {
        run(coroutine);
    } else {
        currentLoop->next = coroutine;
    }
}

bool Trampoline::isRunning() {
    return currentLoop != nullptr;
}

}  // namespace zorvane
