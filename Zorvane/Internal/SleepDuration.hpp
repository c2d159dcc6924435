// The one way from seconds, as constants and callers give them, to the nanoseconds that a clock counts.
#pragma once

#include <chrono>
#include <cstdint>

namespace zorvane {

/// `seconds` in whole nanoseconds, cut toward zero. What is infinite or longer than 146 years becomes 146 years, so
/// that adding it to a clock's time can't overflow; NaN and negative values become zero.
constexpr std::chrono::nanoseconds sleepDuration(double seconds) {
    constexpr double longest = 0x1p62;
    const double nanoseconds = seconds * 1e9;
    if (!(nanoseconds > 0)) {
        return std::chrono::nanoseconds::zero();
    }
    return std::chrono::nanoseconds(static_cast<std::int64_t>(nanoseconds < longest ? nanoseconds : longest));
}

}  // namespace zorvane
