// The definitions behind CMTime.hpp, which includes this file; nobody else does.
#pragma once

#include "Zorvane/Platform/CoreMedia/CMTime.hpp"

namespace zorvane {
namespace time_arithmetic {

__extension__ using Int128 = __int128;

inline constexpr std::uint32_t notNumericMask =
    CMTimeFlags::positiveInfinity | CMTimeFlags::negativeInfinity | CMTimeFlags::indefinite;

constexpr bool fits64(Int128 value) {
    return value >= std::numeric_limits<std::int64_t>::min() && value <= std::numeric_limits<std::int64_t>::max();
}

constexpr std::uint32_t roundedFlag(bool rounded) {
    return rounded ? CMTimeFlags::hasBeenRounded : 0;
}

constexpr CMTime numeric(std::int64_t value, std::int32_t timescale, std::uint32_t rounded, std::int64_t epoch) {
    return {value, timescale, {CMTimeFlags::valid | rounded}, epoch};
}

/// The place of a time among the kinds of times, in the order in which they compare.
constexpr int kind(const CMTime& time) {
    if (!time.isValid()) {
        return 4;
    }
    if (time.flags.contains(CMTimeFlags::positiveInfinity)) {
        return 3;
    }
    if (time.flags.contains(CMTimeFlags::indefinite)) {
        return 2;
    }
    return time.flags.contains(CMTimeFlags::negativeInfinity) ? 0 : 1;
}

/// `numerator / denominator`, ties away from zero.
constexpr Int128 divideToNearest(Int128 numerator, Int128 denominator) {
    const Int128 quotient = numerator / denominator;
    const Int128 remainder = numerator % denominator;
    const Int128 magnitude = remainder < 0 ? -remainder : remainder;
    if (magnitude < denominator - magnitude) {
        return quotient;
    }
    return numerator < 0 ? quotient - 1 : quotient + 1;
}

/// `units / unitsPerSecond` in the finest timescale that fits: the exact one, else the largest, halved while the value
/// overflows. The caller's numbers keep `units` below 2^95, so the product with a timescale stays inside 128 bits.
constexpr CMTime fitted(Int128 units, std::int64_t unitsPerSecond, std::uint32_t rounded, std::int64_t epoch) {
    constexpr std::int64_t maxTimescale = std::numeric_limits<std::int32_t>::max();
    if (unitsPerSecond <= maxTimescale && fits64(units)) {
        // Nearly always; spares the divisions.
        return numeric(static_cast<std::int64_t>(units), static_cast<std::int32_t>(unitsPerSecond), rounded, epoch);
    }
    for (std::int64_t scale = unitsPerSecond < maxTimescale ? unitsPerSecond : maxTimescale; scale > 0; scale /= 2) {
        const Int128 value = divideToNearest(units * scale, unitsPerSecond);
        if (fits64(value)) {
            const bool isExact = value * unitsPerSecond == units * scale;
            return numeric(static_cast<std::int64_t>(value), static_cast<std::int32_t>(scale),
                           rounded | roundedFlag(!isExact), epoch);
        }
    }
    return units < 0 ? kCMTimeNegativeInfinity : kCMTimePositiveInfinity;
}

/// The sum (`sign` 1) or difference (`sign` -1) of two numeric times of one or no epoch.
constexpr CMTime combineNumeric(const CMTime& left, const CMTime& right, int sign, std::int64_t epoch) {
    const std::uint32_t rounded = (left.flags.rawValue | right.flags.rawValue) & CMTimeFlags::hasBeenRounded;
    if (left.timescale == right.timescale) {
        return fitted(Int128{left.value} + sign * Int128{right.value}, left.timescale, rounded, epoch);
    }
    const std::int64_t common = std::lcm(std::int64_t{left.timescale}, std::int64_t{right.timescale});
    const Int128 leftUnits = Int128{left.value} * (common / left.timescale);
    const Int128 rightUnits = Int128{right.value} * (common / right.timescale);
    return fitted(leftUnits + sign * rightUnits, common, rounded, epoch);
}

constexpr CMTime negatedKind(const CMTime& time) {
    if (time.isPositiveInfinity()) {
        return kCMTimeNegativeInfinity;
    }
    return time.isNegativeInfinity() ? kCMTimePositiveInfinity : time;
}

/// `left + right` where at least one of them is not numeric.
constexpr CMTime combineSpecial(const CMTime& left, const CMTime& right) {
    if (!left.isValid() || !right.isValid()) {
        return kCMTimeInvalid;
    }
    const std::uint32_t kinds = (left.flags.rawValue | right.flags.rawValue) & notNumericMask;
    switch (kinds) {
        case CMTimeFlags::positiveInfinity:
            return kCMTimePositiveInfinity;
        case CMTimeFlags::negativeInfinity:
            return kCMTimeNegativeInfinity;
        default:
            return kCMTimeIndefinite;
    }
}

constexpr CMTime combine(const CMTime& left, const CMTime& right, int sign) {
    if (!left.isNumeric() || !right.isNumeric()) {
        return combineSpecial(left, sign < 0 ? negatedKind(right) : right);
    }
    if (left.epoch != right.epoch && left.epoch != 0 && right.epoch != 0) {
        return kCMTimeInvalid;
    }
    // The difference of two points of one epoch is a span, and spans have no epoch.
    const bool isSpan = sign < 0 && left.epoch == right.epoch;
    return combineNumeric(left, right, sign, isSpan ? 0 : (left.epoch != 0 ? left.epoch : right.epoch));
}

}  // namespace time_arithmetic

constexpr bool CMTime::isNumeric() const {
    return isValid() && timescale > 0 && !flags.containsAny(time_arithmetic::notNumericMask);
}

constexpr CMTime CMTime::make(std::int64_t value, std::int32_t timescale) {
    return timescale > 0 ? time_arithmetic::numeric(value, timescale, 0, 0) : kCMTimeInvalid;
}

constexpr CMTime CMTime::fromSeconds(double seconds, std::int32_t preferredTimescale) {
    if (preferredTimescale <= 0 || seconds != seconds) {
        return kCMTimeInvalid;
    }
    // The wider type keeps the product from being rounded onto a tie, which would then round to the wrong side.
    constexpr long double limit = 0x1p63L;
    for (std::int32_t scale = preferredTimescale; scale > 0; scale /= 2) {
        const long double exact = static_cast<long double>(seconds) * scale;
        if (exact > -limit && exact < limit - 1) {
            const auto value = static_cast<std::int64_t>(exact + (exact < 0 ? -0.5L : 0.5L));
            const bool rounded = static_cast<long double>(value) != exact;
            return time_arithmetic::numeric(value, scale, time_arithmetic::roundedFlag(rounded), 0);
        }
    }
    return seconds < 0 ? kCMTimeNegativeInfinity : kCMTimePositiveInfinity;
}

constexpr double CMTime::seconds() const {
    if (isNumeric()) {
        return static_cast<double>(value) / timescale;
    }
    if (isPositiveInfinity()) {
        return std::numeric_limits<double>::infinity();
    }
    return isNegativeInfinity() ? -std::numeric_limits<double>::infinity() : std::numeric_limits<double>::quiet_NaN();
}

constexpr std::weak_ordering operator<=>(const CMTime& left, const CMTime& right) {
    if (!left.isNumeric() || !right.isNumeric()) {
        return time_arithmetic::kind(left) <=> time_arithmetic::kind(right);
    }
    if (left.epoch != right.epoch) {
        return left.epoch <=> right.epoch;
    }
    if (left.timescale == right.timescale) {
        return left.value <=> right.value;
    }
    const auto leftUnits = time_arithmetic::Int128{left.value} * right.timescale;
    const auto rightUnits = time_arithmetic::Int128{right.value} * left.timescale;
    return leftUnits < rightUnits   ? std::weak_ordering::less
           : leftUnits > rightUnits ? std::weak_ordering::greater
                                    : std::weak_ordering::equivalent;
}

constexpr bool operator==(const CMTime& left, const CMTime& right) {
    return (left <=> right) == 0;
}

constexpr CMTime operator+(const CMTime& left, const CMTime& right) {
    return time_arithmetic::combine(left, right, 1);
}

constexpr CMTime operator-(const CMTime& left, const CMTime& right) {
    return time_arithmetic::combine(left, right, -1);
}

}  // namespace zorvane
