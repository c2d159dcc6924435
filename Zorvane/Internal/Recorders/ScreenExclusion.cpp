#include "Zorvane/Internal/Recorders/ScreenExclusion.hpp"

#include <algorithm>
#include <optional>
#include <string_view>
#include <vector>

#include "Zorvane/Internal/Discovery/ApplicationDiscovery.hpp"
#include "Zorvane/Internal/Discovery/WindowDiscovery.hpp"
#include "Zorvane/Platform/Foundation/NSProcessInfo.hpp"

namespace zorvane {
namespace {

constexpr std::string_view indicatorOwner = "com.apple.controlcenter";
constexpr std::string_view indicatorTitle = "AudioVideoModule";

std::optional<std::int32_t> indicatorProcessID() {
    for (const auto& application : ApplicationDiscovery::shared()->applications()) {
        if (application->bundleIdentifier() == indicatorOwner) {
            return application->id();
        }
    }
    return std::nullopt;
}

/// The windows by which the desktop shows that it is being recorded.
ZVWindow::List indicatorWindows() {
    const std::optional<std::int32_t> owner = indicatorProcessID();
    if (!owner) {
        return {};
    }
    ZVWindow::List windows = WindowDiscovery::shared()->windows();
    std::erase_if(windows, [&owner](const auto& window) {
        return window->applicationProcessID() != owner || window->title() != indicatorTitle;
    });
    return windows;
}

}  // namespace

DisplayFilterOptions displayFilterOptions(const std::set<ZVScreenRecordingExcludeOptions>& excluding) {
    DisplayFilterOptions options{.kind = SCContentFilterKind::excludingApplications};
    if (excluding.contains(ZVScreenRecordingExcludeOptions::currentProcess)) {
        options.processIDs.push_back(processIdentifier());
    }
    if (!excluding.contains(ZVScreenRecordingExcludeOptions::screenRecordingIndicator)) {
        return options;
    }
    for (const auto& window : indicatorWindows()) {
        // Listed beside its own excluded process, a window would be shown.
        if (std::ranges::count(options.processIDs, *window->applicationProcessID()) == 0) {
            options.windowIDs.push_back(window->id());
        }
    }
    return options;
}

}  // namespace zorvane
