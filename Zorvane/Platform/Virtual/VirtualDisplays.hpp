// The display queries of a virtual desktop.
#pragma once

#include <memory>
#include <utility>

#include "Zorvane/Platform/CoreGraphics/CGDisplays.hpp"
#include "Zorvane/Platform/Virtual/VirtualDesktop.hpp"

namespace zorvane {

class VirtualDisplays final : public CGDisplays {
  public:
    explicit VirtualDisplays(std::shared_ptr<VirtualDesktop> desktop) : desktop_(std::move(desktop)) {}

    std::vector<CGDirectDisplayID> activeDisplayList() override;
    std::optional<CGDisplayProperties> properties(CGDirectDisplayID displayID) override;
    std::optional<CGDisplayMode> displayMode(CGDirectDisplayID displayID) override;
    bool preflightScreenCaptureAccess() override;

  private:
    const std::shared_ptr<VirtualDesktop> desktop_;
};

}  // namespace zorvane
