// When a frame is repeated, and which time a frame is given.
#pragma once

#include <chrono>
#include <optional>

#include "Zorvane/Platform/CoreMedia/CMTime.hpp"

namespace zorvane {

/// The timing of a frame repeater, whatever its frames are. Not synchronised.
class FrameRepeaterTiming {
  public:
    /// `interval` in seconds.
    explicit FrameRepeaterTiming(double interval);

    /// How long no frame may come before the last one is repeated, and how much later the repeat may be: a tenth. Both
    /// in whole milliseconds.
    std::chrono::milliseconds sleepInterval() const { return sleepInterval_; }
    std::chrono::milliseconds sleepIntervalTolerance() const { return sleepIntervalTolerance_; }

    /// The difference of two times of the host clock.
    static CMTime elapsed(std::chrono::nanoseconds from, std::chrono::nanoseconds to);

    /// The time at which to hand on a frame of `time`, later than all before it; nothing if the frame is to be left
    /// out. `addedTime` is present for a repeat.
    std::optional<CMTime> nextTime(CMTime time, const std::optional<CMTime>& addedTime);

  private:
    const std::chrono::milliseconds sleepInterval_;
    const std::chrono::milliseconds sleepIntervalTolerance_;
    std::optional<CMTime> lastItemTime_;
};

}  // namespace zorvane
