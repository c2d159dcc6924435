#include "Zorvane/Platform/Linux/X11/X11Workspace.hpp"

#include <unordered_set>
#include <utility>

#include "Zorvane/Platform/Foundation/NSError.hpp"
#include "Zorvane/Platform/Linux/System/ApplicationCatalog.hpp"
#include "Zorvane/Platform/Linux/X11/DesktopWatch.hpp"
#include "Zorvane/Platform/Linux/X11/WindowIcon.hpp"
#include "Zorvane/Platform/Linux/X11/XProperty.hpp"
#include "Zorvane/Platform/Linux/X11/XSession.hpp"

namespace zorvane {
namespace {

std::optional<std::string> unlessEmpty(std::string text) {
    return text.empty() ? std::nullopt : std::optional(std::move(text));
}

}  // namespace

X11Workspace::X11Workspace(std::shared_ptr<DesktopWatch> watch, std::shared_ptr<ApplicationCatalog> catalog,
                           std::shared_ptr<XSession> session, ImageFileReader readImage)
    : watch_(std::move(watch)),
      catalog_(std::move(catalog)),
      session_(std::move(session)),
      readImage_(std::move(readImage)) {}

std::vector<NSRunningApplication> X11Workspace::runningApplications() {
    const std::lock_guard lock(mutex_);
    if (auto state = watch_->state(); state != state_) {
        applications_.clear();
        std::unordered_set<std::int32_t> seen{0};
        for (const auto& window : state->windows) {
            if (seen.insert(window->processID).second) {
                applications_.push_back(applicationOf(*window));
            }
        }
        state_ = std::move(state);
    }
    return applications_;
}

std::optional<NSRunningApplication> X11Workspace::frontmostApplication() {
    const auto state = watch_->state();
    const XWindow* window = state->find(state->activeWindow);
    return window && window->processID != 0 ? std::optional(applicationOf(*window)) : std::nullopt;
}

NSRunningApplication X11Workspace::applicationOf(const XWindow& window) const {
    auto identity = catalog_->identify(window.processID, window.className, window.instanceName);
    return {.processIdentifier = window.processID,
            .localizedName = unlessEmpty(std::move(identity.name)),
            .bundleIdentifier = unlessEmpty(std::move(identity.identifier))};
}

NSKeyValueObservation X11Workspace::observeRunningApplications(ChangeHandler handler) {
    return watch_->observe(DesktopAspect::applications, std::move(handler));
}

NSKeyValueObservation X11Workspace::observeFrontmostApplication(ChangeHandler handler) {
    return watch_->observe(DesktopAspect::activeWindow, std::move(handler));
}

std::optional<NSImage> X11Workspace::icon(std::int32_t processIdentifier) {
    const auto state = watch_->state();
    for (const auto& window : state->windows) {
        if (window->processID != processIdentifier || processIdentifier == 0) {
            continue;
        }
        const auto identity = catalog_->identify(processIdentifier, window->className, window->instanceName);
        const auto file = catalog_->iconFile(identity);
        auto image = file ? readImage_(*file) : std::nullopt;
        if (!image) {
            image = windowIcon(*window);
        }
        if (image) {
            return image;
        }
    }
    return std::nullopt;
}

std::optional<NSImage> X11Workspace::windowIcon(const XWindow& window) const {
    constexpr std::uint32_t mostBytes = 4 << 20;
    try {
        const XQuery query = session_->query();
        const XPropertyQuery icon(*query, window.windowID, internAtom(*query, "_NET_WM_ICON"), mostBytes);
        return largestWindowIcon(icon.answer().numbers());
    } catch (const NSError&) {
        return std::nullopt;  // without a server there are no windows
    }
}

}  // namespace zorvane
