// The displays of an X server.
#pragma once

#include <memory>
#include <mutex>
#include <vector>

#include "Zorvane/Platform/CoreGraphics/CGDisplays.hpp"
#include "Zorvane/Platform/Foundation/NSKeyValueObservation.hpp"

namespace zorvane {

class DesktopWatch;
class XSession;

/// `CGDisplays` on RANDR. A point is a pixel; see `readDisplays` for what a display is. Queries wait for the server.
/// Reconfigurations come from a `DesktopWatch`, on its thread, one call for all that changed at once.
class X11Displays final : public CGDisplays {
  public:
    X11Displays(std::shared_ptr<XSession> session, std::shared_ptr<DesktopWatch> watch);
    ~X11Displays() override;

    std::vector<CGDirectDisplayID> activeDisplayList() override;
    std::optional<CGDisplayProperties> properties(CGDirectDisplayID displayID) override;
    std::optional<CGDisplayMode> displayMode(CGDirectDisplayID displayID) override;
    void registerReconfigurationCallback(CGDisplayReconfigurationCallBack callback, void* userInfo) override;
    void removeReconfigurationCallback(CGDisplayReconfigurationCallBack callback, void* userInfo) override;

  private:
    class Registration;
    struct Registered {
        std::shared_ptr<Registration> registration;
        NSKeyValueObservation observation;
    };

    const std::shared_ptr<XSession> session_;
    const std::shared_ptr<DesktopWatch> watch_;
    std::mutex mutex_;
    std::vector<Registered> registered_;  // guarded by mutex_
};

}  // namespace zorvane
