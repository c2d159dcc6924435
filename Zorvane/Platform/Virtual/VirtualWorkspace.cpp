#include "Zorvane/Platform/Virtual/VirtualWorkspace.hpp"

namespace zorvane {
namespace {

std::optional<std::string> unlessEmpty(const std::string& text) {
    return text.empty() ? std::nullopt : std::optional(text);
}

NSRunningApplication describe(const SCRunningApplication& application) {
    return {application.processID, unlessEmpty(application.applicationName), unlessEmpty(application.bundleIdentifier)};
}

}  // namespace

std::vector<NSRunningApplication> VirtualWorkspace::runningApplications() {
    return desktop_->withState([](VirtualDesktopState& state) {
        std::vector<NSRunningApplication> applications;
        for (const SCRunningApplication& application : state.scene.applications) {
            applications.push_back(describe(application));
        }
        return applications;
    });
}

std::optional<NSRunningApplication> VirtualWorkspace::frontmostApplication() {
    return desktop_->withState([](VirtualDesktopState& state) -> std::optional<NSRunningApplication> {
        const auto frontmost = state.scene.frontmostApplication();
        return frontmost ? std::optional(describe(*frontmost)) : std::nullopt;
    });
}

NSKeyValueObservation VirtualWorkspace::observeRunningApplications(ChangeHandler handler) {
    return desktop_->sceneHandlers().runningApplicationsChanged->observe(std::move(handler));
}

NSKeyValueObservation VirtualWorkspace::observeFrontmostApplication(ChangeHandler handler) {
    return desktop_->sceneHandlers().frontmostApplicationChanged->observe(std::move(handler));
}

std::optional<NSImage> VirtualWorkspace::icon(std::int32_t processIdentifier) {
    return desktop_->withState([processIdentifier](VirtualDesktopState& state) -> std::optional<NSImage> {
        const auto icon = state.scene.icons.find(processIdentifier);
        return icon != state.scene.icons.end() ? std::optional(icon->second) : std::nullopt;
    });
}

}  // namespace zorvane
