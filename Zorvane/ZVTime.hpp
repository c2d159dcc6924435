// Public time values: positions on a recording's own time line, where 0 is the recording's start.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "Zorvane/Platform/CoreMedia/CMTime.hpp"

namespace zorvane {

/// A position or a span on the recording's time line. Immutable; 0 by default.
///
/// `value / timescale` is the exact time, `seconds` the same as a number. A time read from a file keeps the file's
/// `seconds`, whatever the other two say; arithmetic uses only `value` and `timescale`.
class ZVTime {
  public:
    ZVTime() = default;
    /// Takes all three as they are.
    ZVTime(double seconds, std::int64_t value, std::int32_t timescale)
        : seconds_(seconds), value_(value), timescale_(timescale) {}

    /// The time from `startTime` to `from`, negative if `from` is earlier. The forms that take a number cut fractions
    /// of a nanosecond off and throw a `ZVError` (bad operation) if the difference isn't finite or exceeds 292 years.
    static ZVTime from(double from, double startTime);
    static ZVTime from(double from, const CMTime& startTime);
    static ZVTime from(const CMTime& from, const CMTime& startTime);

    double seconds() const { return seconds_; }
    /// Numerator of the exact time.
    std::int64_t value() const { return value_; }
    /// Units per second.
    std::int32_t timescale() const { return timescale_; }
    CMTime cmTime() const { return CMTime::make(value_, timescale_); }

    /// Exact as `CMTime` is.
    ZVTime operator+(const ZVTime& other) const { return fromDifference(cmTime() + other.cmTime()); }
    ZVTime operator-(const ZVTime& other) const { return fromDifference(cmTime() - other.cmTime()); }
    /// Equal in all three stored numbers.
    bool operator==(const ZVTime&) const = default;

    /// An object of "seconds", "timescale", "value", on one line. Throws a `std::exception` if `seconds` isn't finite.
    std::string toJSON() const;
    /// Reads that object; all three keys are required. Throws a `std::exception` that names the path of what is wrong.
    static ZVTime fromJSON(std::string_view json);

  private:
    static ZVTime fromDifference(const CMTime& time) { return {time.seconds(), time.value, time.timescale}; }

    double seconds_ = 0;
    std::int64_t value_ = 0;
    std::int32_t timescale_ = 1'000'000'000;
};

/// A stretch of the recording's time line.
struct ZVTimeRange {
    ZVTime begin;
    ZVTime duration;

    static ZVTimeRange between(const ZVTime& begin, const ZVTime& end) { return {begin, end - begin}; }

    ZVTime end() const { return begin + duration; }
    bool operator==(const ZVTimeRange&) const = default;

    /// A JSON object with the keys "begin" and "duration", each a `ZVTime` object, on one line. Throws as those do.
    std::string toJSON() const;
    /// Reads that object; both keys are required. Throws a `std::exception` that names the path of what is wrong.
    static ZVTimeRange fromJSON(std::string_view json);
};

}  // namespace zorvane
