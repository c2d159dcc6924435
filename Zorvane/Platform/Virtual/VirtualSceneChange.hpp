// What changes of a scene the window server and the workspace tell of.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "Zorvane/Platform/Virtual/VirtualHandlers.hpp"
#include "Zorvane/Platform/Virtual/VirtualScene.hpp"

namespace zorvane {

/// Who hears of changes.
struct VirtualSceneHandlers {
    using Reconfigured = VirtualHandlers<CGDirectDisplayID, CGDisplayChangeSummaryFlags>;

    std::shared_ptr<Reconfigured> displayReconfigured = std::make_shared<Reconfigured>();
    std::shared_ptr<VirtualHandlers<>> runningApplicationsChanged = std::make_shared<VirtualHandlers<>>();
    std::shared_ptr<VirtualHandlers<>> frontmostApplicationChanged = std::make_shared<VirtualHandlers<>>();
    std::shared_ptr<VirtualHandlers<>> windowsChanged = std::make_shared<VirtualHandlers<>>();
};

/// What of a scene is told of when it changes.
struct VirtualSceneOutline {
    explicit VirtualSceneOutline(const VirtualScene& scene);

    std::vector<VirtualDisplay> displays;
    std::vector<SCRunningApplication> applications;
    std::optional<SCRunningApplication> frontmost;
    std::vector<SCWindow> windows;
};

/// Tells of each display that came, went or changed, then of the applications and the windows, without the desktop's
/// lock.
void tellOfChange(const VirtualSceneHandlers& handlers, const VirtualSceneOutline& before,
                  const VirtualSceneOutline& after);

}  // namespace zorvane
