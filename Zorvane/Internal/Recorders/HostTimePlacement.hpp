// Brings the times of a source's samples to the host clock.
#pragma once

#include <optional>

#include "Zorvane/Platform/CoreMedia/CMSampleBuffer.hpp"

namespace zorvane {

class CMClock;

/// The time of a picture on the host clock: that of its arrival when its source has no clock, where `clock` is null.
CMTime hostTimeOf(const CMSampleBuffer& sampleBuffer, const CMClock* clock);

/// Samples that join stay joined: all of them are moved by the same time, until the clocks have parted by more than a
/// rounding. A source without a clock is placed by the arrival of its first sample, and anew when a later arrival is
/// off by more than a tenth of a second. A source on the host clock is left as it is. Used by one thread at a time;
/// allocates nothing.
class HostTimePlacement {
  public:
    /// The sample with its time on the host clock, in the timescale that it had. `clock` is the source's, null if it
    /// has none. A sample without a time is left as it is.
    CMSampleBuffer place(const CMSampleBuffer& sampleBuffer, const CMClock* clock);

  private:
    std::optional<CMTime> shift_;
};

}  // namespace zorvane
