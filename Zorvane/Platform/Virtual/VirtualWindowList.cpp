#include "Zorvane/Platform/Virtual/VirtualWindowList.hpp"

namespace zorvane {
namespace {

CGWindowDescription describe(const VirtualWindow& entry) {
    const SCWindow& window = entry.window;
    CGWindowDescription description;
    description.number = window.windowID;
    description.bounds = window.frame;
    description.name = window.title;
    description.layer = window.windowLayer;
    description.isOnScreen = window.isOnScreen;
    description.memoryUsage = static_cast<std::int64_t>(window.frame.size.width * window.frame.size.height * 4);
    if (window.owningApplication) {
        description.ownerName = window.owningApplication->applicationName;
        description.ownerPID = window.owningApplication->processID;
    }
    return description;
}

const VirtualScene& sceneToList(const VirtualDesktopState& state) {
    if (state.conditions.windowListError) {
        std::rethrow_exception(state.conditions.windowListError);
    }
    return state.scene;
}

}  // namespace

std::vector<CGWindowDescription> VirtualWindowList::copyWindowInfo(CGWindowListOption, CGWindowID) {
    return desktop_->withState([](VirtualDesktopState& state) {
        std::vector<CGWindowDescription> descriptions;
        for (const VirtualWindow& entry : sceneToList(state).windows) {
            descriptions.push_back(describe(entry));
        }
        return descriptions;
    });
}

std::optional<std::vector<CGWindowID>> VirtualWindowList::create(CGWindowListOption option,
                                                                 CGWindowID relativeToWindow) {
    std::vector<CGWindowID> ids;
    for (const CGWindowDescription& description : copyWindowInfo(option, relativeToWindow)) {
        ids.push_back(description.number);
    }
    return ids.empty() ? std::nullopt : std::optional(std::move(ids));
}

std::vector<CGWindowDescription> VirtualWindowList::createDescriptionFromArray(const std::vector<CGWindowID>& ids) {
    return desktop_->withState([&ids](VirtualDesktopState& state) {
        std::vector<CGWindowDescription> descriptions;
        for (const CGWindowID id : ids) {
            if (const VirtualWindow* window = sceneToList(state).findWindow(id)) {
                descriptions.push_back(describe(*window));
            }
        }
        return descriptions;
    });
}

NSKeyValueObservation VirtualWindowList::observe(std::function<void()> handler) {
    return desktop_->sceneHandlers().windowsChanged->observe(std::move(handler));
}

}  // namespace zorvane
