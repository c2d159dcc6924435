#include "Zorvane/Platform/Linux/X11/X11WindowList.hpp"

#include <algorithm>
#include <unordered_map>
#include <utility>

#include "Zorvane/Platform/Linux/System/ApplicationCatalog.hpp"
#include "Zorvane/Platform/Linux/X11/DesktopWatch.hpp"

namespace zorvane {
namespace {

CGWindowDescription describe(const XWindow& window, ApplicationCatalog& catalog) {
    constexpr double bytesPerPixel = 4;
    CGWindowDescription description{.number = window.windowID,
                                    .bounds = window.frame,
                                    .name = window.title,
                                    .layer = window.level,
                                    .alpha = window.opacity,
                                    .isOnScreen = window.isOnScreen};
    description.memoryUsage =
        static_cast<std::int64_t>(window.frame.size.width * window.frame.size.height * bytesPerPixel);
    description.ownerName = catalog.identify(window.processID, window.className, window.instanceName).name;
    description.ownerPID = window.processID;
    return description;
}

}  // namespace

X11WindowList::X11WindowList(std::shared_ptr<DesktopWatch> watch, std::shared_ptr<ApplicationCatalog> catalog)
    : watch_(std::move(watch)), catalog_(std::move(catalog)) {}

std::vector<CGWindowDescription> X11WindowList::copyWindowInfo(CGWindowListOption, CGWindowID) {
    const std::lock_guard lock(mutex_);
    update();
    std::vector<CGWindowDescription> descriptions;
    descriptions.reserve(windows_.size());
    for (const Described& each : windows_) {
        descriptions.push_back(each.description);
    }
    return descriptions;
}

std::optional<std::vector<CGWindowID>> X11WindowList::create(CGWindowListOption, CGWindowID) {
    const std::lock_guard lock(mutex_);
    update();
    std::vector<CGWindowID> ids;
    for (const Described& each : windows_) {
        ids.push_back(each.description.number);
    }
    return ids.empty() ? std::nullopt : std::optional(std::move(ids));
}

std::vector<CGWindowDescription> X11WindowList::createDescriptionFromArray(const std::vector<CGWindowID>& ids) {
    const std::lock_guard lock(mutex_);
    update();
    std::vector<CGWindowDescription> descriptions;
    for (const CGWindowID id : ids) {
        const auto found = std::find_if(windows_.begin(), windows_.end(),
                                        [&](const Described& each) { return each.description.number == id; });
        if (found != windows_.end()) {
            descriptions.push_back(found->description);
        }
    }
    return descriptions;
}

NSKeyValueObservation X11WindowList::observe(std::function<void()> handler) {
    return watch_->observe(DesktopAspect::windows, std::move(handler));
}

/// Describes anew what is new.
void X11WindowList::update() {
    auto state = watch_->state();
    if (state == state_) {
        return;
    }
    std::unordered_map<const XWindow*, CGWindowDescription> known;
    for (Described& each : windows_) {
        known.emplace(each.window.get(), std::move(each.description));
    }
    windows_.clear();
    for (const auto& window : state->windows) {
        const auto old = known.find(window.get());
        windows_.push_back({window, old == known.end() ? describe(*window, *catalog_) : std::move(old->second)});
    }
    state_ = std::move(state);
}

}  // namespace zorvane
