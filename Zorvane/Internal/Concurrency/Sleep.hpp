// Suspends a task for a while.
#pragma once

#include <chrono>

#include "Zorvane/Internal/Concurrency/Task.hpp"

namespace zorvane {

/// The tolerance of a sleep that names none.
inline constexpr std::chrono::nanoseconds defaultSleepTolerance = std::chrono::milliseconds(1);

/// Suspends for `duration`, and at most `tolerance` longer, on the clock of the current platform. Throws `ZVCancelled`
/// at once when the task is cancelled. A duration of zero or less lets other work go first.
Task<> sleepFor(std::chrono::nanoseconds duration, std::chrono::nanoseconds tolerance = defaultSleepTolerance);

}  // namespace zorvane
