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

void VirtualDisplays::registerReconfigurationCallback(CGDisplayReconfigurationCallBack callback, void* userInfo) {
    const auto id = desktop_->sceneHandlers().displayReconfigured->add(
        [callback, userInfo](CGDirectDisplayID displayID, CGDisplayChangeSummaryFlags flags) {
            callback(displayID, flags, userInfo);
        });
    const MutexLock lock(mutex_);
    registrations_.emplace(Registration(callback, userInfo), id);
}

void VirtualDisplays::removeReconfigurationCallback(CGDisplayReconfigurationCallBack callback, void* userInfo) {
    MutexLock lock(mutex_);
    const auto found = registrations_.find(Registration(callback, userInfo));
    if (found == registrations_.end()) {
        return;
    }
    const auto id = found->second;
    registrations_.erase(found);
    lock.unlock();
    desktop_->sceneHandlers().displayReconfigured->remove(id);
}

}  // namespace zorvane
