#include "Zorvane/Platform/CoreMedia/CMClock.hpp"

#include "Zorvane/Platform/Platform.hpp"

namespace zorvane {

CMTime hostTimeClockTime() {
    constexpr std::int32_t nanosecondsPerSecond = 1'000'000'000;
    return CMTime::make(Platform::current()->clock->now().count(), nanosecondsPerSecond);
}

}  // namespace zorvane
