#include "Zorvane/Platform/CoreVideo/RefreshInterval.hpp"

#include <algorithm>
#include <cmath>

namespace zorvane {

std::chrono::nanoseconds refreshInterval(CGDisplays& displays, CGDirectDisplayID displayID) {
    constexpr double usualRate = 60;      // Hz
    constexpr double highestRate = 1000;  // of a panel; a driver may say anything
    const auto mode = displays.displayMode(displayID);
    const double rate = mode && mode->refreshRate > 0 ? std::min(mode->refreshRate, highestRate) : usualRate;
    return std::chrono::nanoseconds(std::llround(1e9 / rate));
}

}  // namespace zorvane
