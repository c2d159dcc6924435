// The window queries of a virtual desktop.
#pragma once

#include <functional>
#include <memory>
#include <utility>

#include "Zorvane/Platform/CoreGraphics/CGWindowList.hpp"
#include "Zorvane/Platform/Virtual/VirtualDesktop.hpp"

namespace zorvane {

/// Lists all windows for either option, minimised ones as not on screen. A query fails, by throwing, only while the
/// script says so.
class VirtualWindowList final : public CGWindowList {
  public:
    explicit VirtualWindowList(std::shared_ptr<VirtualDesktop> desktop) : desktop_(std::move(desktop)) {}

    std::vector<CGWindowDescription> copyWindowInfo(CGWindowListOption option, CGWindowID relativeToWindow) override;
    std::optional<std::vector<CGWindowID>> create(CGWindowListOption option, CGWindowID relativeToWindow) override;
    std::vector<CGWindowDescription> createDescriptionFromArray(const std::vector<CGWindowID>& ids) override;
    NSKeyValueObservation observe(std::function<void()> handler) override;

  private:
    const std::shared_ptr<VirtualDesktop> desktop_;
};

}  // namespace zorvane
