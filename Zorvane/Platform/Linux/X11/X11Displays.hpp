// The displays of an X server.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "Zorvane/Platform/CoreGraphics/CGDisplays.hpp"
#include "Zorvane/Platform/Foundation/NSKeyValueObservation.hpp"
#include "Zorvane/Platform/Linux/X11/XDisplayList.hpp"

namespace zorvane {

class DesktopWatch;
class XSession;

/// `CGDisplays` on RANDR. A point is a pixel; see `readDisplays` for what a display is. A query waits for the server
/// only if that has told of a change since the last one, or a `DesktopWatch` can't hear of any. Reconfigurations come
/// from a `DesktopWatch`, on its thread, one call for all that changed at once.
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

    /// The displays as they were at a revision of the watch.
    struct Known {
        std::uint64_t revision = 0;
        std::shared_ptr<const std::vector<XDisplay>> displays;
    };

    std::shared_ptr<const std::vector<XDisplay>> displays();
    std::optional<XDisplay> find(CGDirectDisplayID displayID);

    const std::shared_ptr<XSession> session_;
    const std::shared_ptr<DesktopWatch> watch_;
    std::mutex mutex_;  // guards the two below
    std::vector<Registered> registered_;
    Known known_;
};

}  // namespace zorvane
