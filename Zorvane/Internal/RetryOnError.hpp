// Tries a suspending call several times.
#pragma once

#include <type_traits>
#include <utility>

#include "Zorvane/Internal/Concurrency/CurrentTask.hpp"
#include "Zorvane/Internal/Concurrency/Sleep.hpp"
#include "Zorvane/Internal/Precondition.hpp"
#include "Zorvane/Internal/SleepDuration.hpp"

namespace zorvane {

/// Gives the result of the first `operation()` that doesn't throw, each a fresh `Task`, with `retryDelay` seconds
/// between two attempts. Throws what the last of `maxAttempts` attempts throws; earlier errors are dropped. A
/// cancelled task makes no further attempt and throws `ZVCancelled`. Fewer than one attempt ends the process.
template <class Operation>
std::invoke_result_t<Operation&> retryOnError(int maxAttempts, double retryDelay, Operation operation) {
    using T = typename std::invoke_result_t<Operation&>::ResultType;
    precondition(maxAttempts > 0, "A retry needs at least 1 attempt.");
    for (int attempt = 1; attempt < maxAttempts; ++attempt) {
        co_await checkCancellation();
        ZVOutcome<T> outcome = co_await operation().outcome();
        if (outcome.isSuccess()) {
            co_return std::move(outcome).value();
        }
        co_await sleepFor(sleepDuration(retryDelay));
    }
    co_await checkCancellation();
    co_return co_await operation();
}

}  // namespace zorvane
