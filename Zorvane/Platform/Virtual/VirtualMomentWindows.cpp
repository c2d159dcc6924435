// The words about windows and applications.
#include <algorithm>
#include <utility>

#include "Zorvane/Platform/Virtual/VirtualMoment.hpp"

namespace zorvane {
namespace {

bool belongsTo(const VirtualWindow& entry, std::int32_t processID) {
    return entry.window.owningApplication && entry.window.owningApplication->processID == processID;
}

}  // namespace

const VirtualMoment& VirtualMoment::setWindows(std::vector<VirtualWindow> windows) const {
    return changePicture([windows = std::move(windows)](VirtualScene& scene) { scene.windows = windows; });
}

const VirtualMoment& VirtualMoment::openWindow(const VirtualWindow& window) const {
    return changePicture([window](VirtualScene& scene) { scene.windows.insert(scene.windows.begin(), window); });
}

const VirtualMoment& VirtualMoment::changeWindow(std::uint32_t windowID, std::function<void(SCWindow&)> change) const {
    return changePicture([windowID, change = std::move(change)](VirtualScene& scene) {
        if (VirtualWindow* entry = scene.findWindow(windowID)) {
            change(entry->window);
        }
    });
}

const VirtualMoment& VirtualMoment::moveWindow(std::uint32_t windowID, const CGRect& frame) const {
    return changeWindow(windowID, [frame](SCWindow& window) { window.frame = frame; });
}

const VirtualMoment& VirtualMoment::raiseWindow(std::uint32_t windowID) const {
    return changePicture([windowID](VirtualScene& scene) {
        std::stable_partition(scene.windows.begin(), scene.windows.end(),
                              [windowID](const VirtualWindow& entry) { return entry.window.windowID == windowID; });
    });
}

const VirtualMoment& VirtualMoment::retitleWindow(std::uint32_t windowID, std::optional<std::string> title) const {
    return changeWindow(windowID, [title = std::move(title)](SCWindow& window) { window.title = title; });
}

const VirtualMoment& VirtualMoment::minimizeWindow(std::uint32_t windowID) const {
    return changeWindow(windowID, [](SCWindow& window) { window.isOnScreen = false; });
}

const VirtualMoment& VirtualMoment::restoreWindow(std::uint32_t windowID) const {
    return changeWindow(windowID, [](SCWindow& window) { window.isOnScreen = true; });
}

const VirtualMoment& VirtualMoment::closeWindow(std::uint32_t windowID) const {
    return changePicture([windowID](VirtualScene& scene) {
        std::erase_if(scene.windows,
                      [windowID](const VirtualWindow& entry) { return entry.window.windowID == windowID; });
    });
}

const VirtualMoment& VirtualMoment::failWindowList(std::exception_ptr error) const {
    return perform([error](VirtualDesktop& desktop) {
        desktop.withState([error](VirtualDesktopState& state) { state.conditions.windowListError = error; });
        desktop.sceneHandlers().windowsChanged->call();
    });
}

const VirtualMoment& VirtualMoment::setApplications(std::vector<SCRunningApplication> applications) const {
    return changeScene(
        [applications = std::move(applications)](VirtualScene& scene) { scene.applications = applications; });
}

const VirtualMoment& VirtualMoment::startApplication(const SCRunningApplication& application) const {
    return changeScene([application](VirtualScene& scene) { scene.applications.push_back(application); });
}

const VirtualMoment& VirtualMoment::quitApplication(std::int32_t processID) const {
    return changePicture([processID](VirtualScene& scene) {
        std::erase_if(scene.windows, [processID](const VirtualWindow& entry) { return belongsTo(entry, processID); });
        std::erase_if(scene.applications, [processID](const SCRunningApplication& application) {
            return application.processID == processID;
        });
    });
}

const VirtualMoment& VirtualMoment::activateApplication(std::int32_t processID) const {
    return changePicture([processID](VirtualScene& scene) {
        std::stable_partition(scene.windows.begin(), scene.windows.end(),
                              [processID](const VirtualWindow& entry) { return belongsTo(entry, processID); });
    });
}

const VirtualMoment& VirtualMoment::setIcon(std::int32_t processID, const NSImage& icon) const {
    return changeScene([processID, icon](VirtualScene& scene) { scene.icons[processID] = icon; });
}

}  // namespace zorvane
