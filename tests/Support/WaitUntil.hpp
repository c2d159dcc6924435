// Waiting for what another process does in its own time.
#pragma once

#include <thread>

namespace zorvane {

/// Asks until it is so. A test that waits for ever is ended by ctest.
template <class Predicate>
void waitUntil(Predicate isTrue) {
    while (!isTrue()) {
        std::this_thread::yield();
    }
}

}  // namespace zorvane
