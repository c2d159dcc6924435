#include "Zorvane/Platform/Virtual/VirtualSceneChange.hpp"

#include <algorithm>

namespace zorvane {
namespace {

const VirtualDisplay* find(const std::vector<VirtualDisplay>& displays, CGDirectDisplayID displayID) {
    const auto found = std::ranges::find(displays, displayID, &VirtualDisplay::displayID);
    return found != displays.end() ? &*found : nullptr;
}

void tellOfDisplays(VirtualSceneHandlers::Reconfigured& handlers, const std::vector<VirtualDisplay>& before,
                    const std::vector<VirtualDisplay>& after) {
    for (const VirtualDisplay& display : before) {
        if (!find(after, display.displayID)) {
            handlers.call(display.displayID, CGDisplayChangeSummaryFlags::remove);
        }
    }
    for (const VirtualDisplay& display : after) {
        const VirtualDisplay* old = find(before, display.displayID);
        if (!old) {
            handlers.call(display.displayID, CGDisplayChangeSummaryFlags::add);
        } else if (!(*old == display)) {
            handlers.call(display.displayID, CGDisplayChangeSummaryFlags::desktopShapeChanged);
        }
    }
}

}  // namespace

VirtualSceneOutline::VirtualSceneOutline(const VirtualScene& scene)
    : applications(scene.applications), frontmost(scene.frontmostApplication()) {
    for (const VirtualScene::Panel& panel : scene.panels) {
        displays.push_back(panel.display);
    }
    for (const VirtualWindow& entry : scene.windows) {
        windows.push_back(entry.window);
    }
}

void tellOfChange(const VirtualSceneHandlers& handlers, const VirtualSceneOutline& before,
                  const VirtualSceneOutline& after) {
    tellOfDisplays(*handlers.displayReconfigured, before.displays, after.displays);
    if (before.applications != after.applications) {
        handlers.runningApplicationsChanged->call();
    }
    if (before.frontmost != after.frontmost) {
        handlers.frontmostApplicationChanged->call();
    }
    if (before.windows != after.windows) {
        handlers.windowsChanged->call();
    }
}

}  // namespace zorvane
