// The clock that a virtual source stamps with.
#pragma once

#include <chrono>

#include "Zorvane/Platform/CoreMedia/CMClock.hpp"

namespace zorvane {

/// Shows less than the host clock by a fixed time.
class VirtualClock final : public CMClock {
  public:
    explicit VirtualClock(std::chrono::nanoseconds behind) : behind_(behind) {}

    std::chrono::nanoseconds behind() const { return behind_; }
    CMTime convertToHostTime(CMTime time) const override { return time + CMTime::make(behind_.count(), 1'000'000'000); }

  private:
    const std::chrono::nanoseconds behind_;
};

}  // namespace zorvane
