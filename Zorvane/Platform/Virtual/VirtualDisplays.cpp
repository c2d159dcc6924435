#include "Zorvane/Platform/Virtual/VirtualDisplays.hpp"

namespace zorvane {

std::vector<CGDirectDisplayID> VirtualDisplays::activeDisplayList() {
    return desktop_->withState([](VirtualDesktopState& state) {
        if (state.conditions.displayListError) {
            throw CGErrorDescription(*state.conditions.displayListError, "The display list can't be read.");
        }
        std::vector<CGDirectDisplayID> displays;
        for (const VirtualScene::Panel& panel : state.scene.panels) {
            displays.push_back(panel.display.displayID);
        }
        return displays;
    });
}

std::optional<CGDisplayProperties> VirtualDisplays::properties(CGDirectDisplayID displayID) {
    return desktop_->withState([displayID](VirtualDesktopState& state) -> std::optional<CGDisplayProperties> {
        const VirtualScene::Panel* panel = state.scene.find(displayID);
        if (!panel) {
            return std::nullopt;
        }
        return panel->display.properties(panel == &state.scene.panels.front());
    });
}

std::optional<CGDisplayMode> VirtualDisplays::displayMode(CGDirectDisplayID displayID) {
    return desktop_->withState([displayID](VirtualDesktopState& state) {
        const VirtualScene::Panel* panel = state.scene.find(displayID);
        return panel ? panel->display.mode() : std::nullopt;
    });
}

bool VirtualDisplays::preflightScreenCaptureAccess() {
    return desktop_->withState([](VirtualDesktopState& state) { return state.conditions.allowsScreenCapture; });
}

}  // namespace zorvane
