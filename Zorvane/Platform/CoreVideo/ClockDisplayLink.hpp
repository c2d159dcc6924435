// Display links that a clock drives.
#pragma once

#include <memory>
#include <utility>

#include "Zorvane/Platform/CoreVideo/CVDisplayLink.hpp"
#include "Zorvane/Platform/Foundation/HostClock.hpp"

namespace zorvane {

/// The links call at the display's rate, by timers, and leave no refresh out. A call that comes late doesn't shift
/// those behind it unless it is late by a whole refresh, and calls that were missed are not made up for.
class ClockDisplayLinks final : public CVDisplayLinks {
  public:
    ClockDisplayLinks(std::shared_ptr<HostClock> clock, std::shared_ptr<CGDisplays> displays)
        : clock_(std::move(clock)), displays_(std::move(displays)) {}

    Created createWithActiveCGDisplays() override;

  private:
    const std::shared_ptr<HostClock> clock_;
    const std::shared_ptr<CGDisplays> displays_;
};

}  // namespace zorvane
