// The displays of an X server.
#pragma once

#include <memory>

#include "Zorvane/Platform/CoreGraphics/CGDisplays.hpp"

namespace zorvane {

class XSession;

/// `CGDisplays` on RANDR. A point is a pixel; see `readDisplays` for what a display is. Calls wait for the server.
class X11Displays final : public CGDisplays {
  public:
    explicit X11Displays(std::shared_ptr<XSession> session) : session_(std::move(session)) {}

    std::vector<CGDirectDisplayID> activeDisplayList() override;
    std::optional<CGDisplayProperties> properties(CGDirectDisplayID displayID) override;
    std::optional<CGDisplayMode> displayMode(CGDirectDisplayID displayID) override;

  private:
    std::shared_ptr<XSession> session_;
};

}  // namespace zorvane
