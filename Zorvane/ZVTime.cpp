#include "Zorvane/ZVTime.hpp"

#include <fmt/format.h>

#include "Zorvane/Internal/JSONReader.hpp"
#include "Zorvane/Internal/JSONWriter.hpp"
#include "Zorvane/Internal/ZVTimeJSON.hpp"
#include "Zorvane/ZVError.hpp"

namespace zorvane {

ZVTime ZVTime::from(double from, double startTime) {
    constexpr std::int32_t nanosecondsPerSecond = 1'000'000'000;
    const double seconds = from - startTime;
    const double nanoseconds = nanosecondsPerSecond * seconds;
    // Written so that NaN fails too.
    if (!(nanoseconds >= -0x1p63 && nanoseconds < 0x1p63)) {
        throw ZVError::badOperation(
            fmt::format("The time from {} s to {} s doesn't fit 64 bits of nanoseconds.", startTime, from));
    }
    return {seconds, static_cast<std::int64_t>(nanoseconds), nanosecondsPerSecond};
}

ZVTime ZVTime::from(double from, const CMTime& startTime) {
    return ZVTime::from(from, startTime.seconds());
}

ZVTime ZVTime::from(const CMTime& from, const CMTime& startTime) {
    return fromDifference(from - startTime);
}

std::string ZVTime::toJSON() const {
    return compactJSON(*this);
}

ZVTime ZVTime::fromJSON(std::string_view json) {
    return readTime(JSONDocument(json).root());
}

std::string ZVTimeRange::toJSON() const {
    return compactJSON(*this);
}

ZVTimeRange ZVTimeRange::fromJSON(std::string_view json) {
    return readTimeRange(JSONDocument(json).root());
}

}  // namespace zorvane
