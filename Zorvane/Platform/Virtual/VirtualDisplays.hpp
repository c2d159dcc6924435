// The display queries of a virtual desktop.
#pragma once

#include <map>
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
    void registerReconfigurationCallback(CGDisplayReconfigurationCallBack callback, void* userInfo) override;
    void removeReconfigurationCallback(CGDisplayReconfigurationCallBack callback, void* userInfo) override;

  private:
    using Registration = std::pair<CGDisplayReconfigurationCallBack, void*>;

    const std::shared_ptr<VirtualDesktop> desktop_;
    Mutex mutex_;
    std::multimap<Registration, VirtualSceneHandlers::Reconfigured::ID> registrations_ ZV_GUARDED_BY(mutex_);
};

}  // namespace zorvane
