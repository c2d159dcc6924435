// Clocks that stamp samples, and the one clock all of them are brought to.
#pragma once

#include "Zorvane/Platform/CoreMedia/CMTime.hpp"

namespace zorvane {

/// The clock that a source stamps its samples with. Any thread may call.
class CMClock {
  public:
    virtual ~CMClock() = default;

    /// A time on this clock, told on the host time clock.
    virtual CMTime convertToHostTime(CMTime time) const = 0;
};

/// The present time on the host time clock of the current platform, in nanoseconds. On a real desktop this is
/// `CLOCK_MONOTONIC`. Any thread; costs one clock read and allocates nothing.
CMTime hostTimeClockTime();

/// The clock of sources that stamp with host time already: conversion changes nothing.
class HostTimeSynchronizationClock final : public CMClock {
  public:
    CMTime convertToHostTime(CMTime time) const override { return time; }
};

}  // namespace zorvane
