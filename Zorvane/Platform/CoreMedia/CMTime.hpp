// Rational media time: a count of units and the number of units per second.
#pragma once

#include <compare>
#include <cstdint>
#include <limits>
#include <numeric>
#include <string>

namespace zorvane {

/// What is known of a `CMTime` beside its number: a set of bits.
struct CMTimeFlags {
    std::uint32_t rawValue = 0;

    static constexpr std::uint32_t valid = 1U << 0U;
    static constexpr std::uint32_t hasBeenRounded = 1U << 1U;
    static constexpr std::uint32_t positiveInfinity = 1U << 2U;
    static constexpr std::uint32_t negativeInfinity = 1U << 3U;
    static constexpr std::uint32_t indefinite = 1U << 4U;

    constexpr bool contains(std::uint32_t flag) const { return (rawValue & flag) == flag; }
    constexpr bool containsAny(std::uint32_t mask) const { return (rawValue & mask) != 0; }

    /// The names of the set bits, joined by ", "; "<empty>" for none. For logs only.
    std::string logDescription() const;

    friend constexpr bool operator==(CMTimeFlags, CMTimeFlags) = default;
};

/// A point or a span on a clock, `value / timescale` seconds.
///
/// A default-constructed time is invalid. A numeric time has the flag `valid`, a positive timescale and none of the
/// flags of the infinities and of indefinite. Arithmetic never wraps: what can't be held exactly is rounded and
/// flagged `hasBeenRounded`, what can't be held at all becomes an infinity. All operations are safe on any thread,
/// allocate nothing (but for the log text) and throw nothing.
struct CMTime {
    std::int64_t value = 0;
    std::int32_t timescale = 0;
    CMTimeFlags flags;
    /// Separates time lines that can't be compared by their values, such as the rounds of a loop. 0 everywhere in
    /// this library.
    std::int64_t epoch = 0;

    /// `value / timescale` seconds; invalid unless `timescale` is positive.
    static constexpr CMTime make(std::int64_t value, std::int32_t timescale);

    /// The time nearest to `seconds` that has the preferred timescale; ties go away from zero. A coarser timescale is
    /// taken if the value would not fit. Infinite seconds give the infinite times; NaN, or a timescale that isn't
    /// positive, gives an invalid one.
    ///
    /// `fromSeconds(t.seconds(), t.timescale)` compares equal to `t` while neighbouring doubles are closer than one
    /// unit: in nanoseconds up to 97 days.
    static constexpr CMTime fromSeconds(double seconds, std::int32_t preferredTimescale);

    /// The time as seconds: an infinity for the infinite times, NaN for invalid and indefinite ones.
    constexpr double seconds() const;

    constexpr bool isValid() const { return flags.contains(CMTimeFlags::valid); }
    /// Valid, and neither infinite nor indefinite.
    constexpr bool isNumeric() const;
    constexpr bool isPositiveInfinity() const { return isValid() && flags.contains(CMTimeFlags::positiveInfinity); }
    constexpr bool isNegativeInfinity() const { return isValid() && flags.contains(CMTimeFlags::negativeInfinity); }

    /// Seconds, timescale, value and flags as one text. For logs only.
    std::string logDescription() const;
};

inline constexpr CMTime kCMTimeInvalid{};
inline constexpr CMTime kCMTimeZero{0, 1, {CMTimeFlags::valid}, 0};
inline constexpr CMTime kCMTimeIndefinite{0, 0, {CMTimeFlags::valid | CMTimeFlags::indefinite}, 0};
inline constexpr CMTime kCMTimePositiveInfinity{0, 0, {CMTimeFlags::valid | CMTimeFlags::positiveInfinity}, 0};
inline constexpr CMTime kCMTimeNegativeInfinity{0, 0, {CMTimeFlags::valid | CMTimeFlags::negativeInfinity}, 0};

/// Compares what the times mean, exactly, whatever their timescales: 1/2 equals 2/4, and the flag `hasBeenRounded`
/// doesn't count. The order is total: negative infinity, numeric times (by epoch, then by value), indefinite,
/// positive infinity, invalid.
constexpr std::weak_ordering operator<=>(const CMTime& left, const CMTime& right);
constexpr bool operator==(const CMTime& left, const CMTime& right);

/// The exact sum or difference in the smallest common timescale. If that exceeds 32 bits, or the value 64 bits, the
/// result is rounded to a coarser timescale. An invalid operand gives an invalid result; otherwise an indefinite one,
/// or infinities that cancel, give an indefinite result; otherwise an infinite operand gives an infinite result.
/// Numeric times of two different epochs, both not 0, give an invalid result.
constexpr CMTime operator+(const CMTime& left, const CMTime& right);
constexpr CMTime operator-(const CMTime& left, const CMTime& right);

}  // namespace zorvane

#include "Zorvane/Platform/CoreMedia/CMTimeArithmetic.hpp"
