#include "Zorvane/Internal/FrameRepeaterTiming.hpp"

#include <fmt/format.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>

#include "Zorvane/Internal/Logger.hpp"
#include "Zorvane/Internal/SleepDuration.hpp"

namespace zorvane {

template <class T>
class FrameRepeater;

namespace {

const Logger& logger() {
    static const Logger repeaterLogger = Logger::forType<FrameRepeater<void>>();
    return repeaterLogger;
}

std::chrono::milliseconds wholeMilliseconds(double milliseconds) {
    // Cut first: the way over seconds may end a nanosecond short of a whole millisecond.
    return std::chrono::round<std::chrono::milliseconds>(sleepDuration(std::trunc(milliseconds) / 1000));
}

std::string description(const std::optional<CMTime>& time) {
    return time ? time->logDescription() : "nil";
}

CMTime oneTickAfter(CMTime time) {
    if (time.value < std::numeric_limits<std::int64_t>::max()) {
        ++time.value;
    }
    return time;
}

}  // namespace

FrameRepeaterTiming::FrameRepeaterTiming(double interval)
    : sleepInterval_(wholeMilliseconds(interval * 1000)), sleepIntervalTolerance_(wholeMilliseconds(interval * 100)) {}

CMTime FrameRepeaterTiming::elapsed(std::chrono::nanoseconds from, std::chrono::nanoseconds to) {
    constexpr std::int32_t nanosecondsPerSecond = 1'000'000'000;
    return CMTime::make((to - from).count(), nanosecondsPerSecond);
}

std::optional<CMTime> FrameRepeaterTiming::nextTime(CMTime time, const std::optional<CMTime>& addedTime) {
    if (!lastItemTime_ || time > *lastItemTime_) {
        logger().trace([&] {
            return fmt::format("Calling handler with {}, addedTime: {}", time.logDescription(), description(addedTime));
        });
        lastItemTime_ = time;
        return time;
    }
    if (addedTime) {
        logger().trace("Got repeated frame with time before or at lastTime, this is repeat, ignoring.");
        return std::nullopt;
    }
    const CMTime newTime = oneTickAfter(*lastItemTime_);
    logger().trace([&] {
        return fmt::format(
            "Got frame with time before or at lastTime. Calling handler with oldTime:{}, newTime:{}, addedTime:{}",
            time.logDescription(), newTime.logDescription(), description(addedTime));
    });
    lastItemTime_ = newTime;
    return newTime;
}

}  // namespace zorvane
