#include "Zorvane/Internal/Recorders/ScreenContentFilter.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <string>
#include <utility>

#include "Zorvane/Internal/CGInterop/Display.hpp"
#include "Zorvane/Internal/CGInterop/DisplayContaining.hpp"
#include "Zorvane/Internal/Concurrency/Executor.hpp"
#include "Zorvane/Internal/RecorderUserMessages.hpp"
#include "Zorvane/Internal/ShareableContent.hpp"
#include "Zorvane/ZVError.hpp"

namespace zorvane {
namespace {

template <class T, class IDs, class GetID>
std::vector<T> keepListed(std::vector<T> all, const IDs& ids, GetID getID) {
    std::erase_if(all, [&](const T& one) { return std::find(ids.begin(), ids.end(), getID(one)) == ids.end(); });
    return all;
}

std::optional<CGDirectDisplayID> displayIDFor(std::uint32_t serialNumber) {
    const PoolBlockingScope blocking;
    for (const CGInterop::Display& display : CGInterop::Display::getActiveDisplays()) {
        if (display.serialNumber == serialNumber) {
            return display.displayID;
        }
    }
    return std::nullopt;
}

[[noreturn]] void throwDisplayNotFound(std::uint32_t serialNumber, const Logger& logger) {
    throwCantFindDisplay(serialNumber, logger);
    logger.error("Can't find display for given ID.", [&] {
        return LogMetadata{{"displaySerialNumber", std::to_string(serialNumber)}};
    });
    throw ZVError::invalidConfiguration(fmt::format("Can't find display with ID: {}", serialNumber));
}

[[noreturn]] void throwWindowNotFound(std::uint32_t windowID, const Logger& logger) {
    throwCantFindWindow(windowID, logger);
    logger.error("Can't find window for given ID.", [&] {
        return LogMetadata{{"windowID", std::to_string(windowID)}};
    });
    throw ZVError::invalidConfiguration(fmt::format("Can't find window with ID: {}", windowID));
}

[[noreturn]] void throwWindowOnNoDisplay(std::uint32_t windowID, const std::vector<SCDisplay>& displays,
                                         const Logger& logger) {
    logger.error("Can't find display for window.", [&] {
        std::vector<std::string> descriptions;
        for (const SCDisplay& display : displays) {
            descriptions.push_back(display.debugDescription());
        }
        return LogMetadata{{"windowID", std::to_string(windowID)},
                           {"displays", fmt::format("{}", fmt::join(descriptions, " / "))}};
    });
    throw ZVError::invalidConfiguration(fmt::format("Can't find display for window: {}", windowID));
}

std::optional<std::int32_t> ownerOf(const SCWindow& window) {
    return window.owningApplication ? std::optional(window.owningApplication->processID) : std::nullopt;
}

/// Lets only the target through: all other applications are excluded, and so are its own application's other windows.
SCContentFilter filterShowingOnly(const SCWindow& target, const SCDisplay& display, SCShareableContent content) {
    const std::optional<std::int32_t> owner = ownerOf(target);
    std::erase_if(content.applications,
                  [&](const SCRunningApplication& application) { return application.processID == owner; });
    std::erase_if(content.windows, [&](const SCWindow& window) {
        return ownerOf(window) != owner || window.windowID == target.windowID;
    });
    return {.kind = SCContentFilterKind::excludingApplications,
            .display = display,
            .applications = std::move(content.applications),
            .windows = std::move(content.windows),
            .subject = target};
}

}  // namespace

CGRect ResolvedContentFilter::globalCrop() const {
    return cropRect ? CGRectOffset(*cropRect, display.frame.origin.x, display.frame.origin.y) : display.frame;
}

Task<ResolvedContentFilter> createDisplayFilter(std::uint32_t displaySerialNumber, DisplayFilterOptions options,
                                                Logger logger) {
    const std::optional<CGDirectDisplayID> displayID = displayIDFor(displaySerialNumber);
    SCShareableContent content = co_await ShareableContent::retrieve(ShareableContentError::Case::timeoutRecordDisplay);
    const auto display = std::find_if(content.displays.begin(), content.displays.end(),
                                      [&](const SCDisplay& candidate) { return candidate.displayID == displayID; });
    if (display == content.displays.end()) {
        throwDisplayNotFound(displaySerialNumber, logger);
    }
    ResolvedContentFilter resolved;
    resolved.display = *display;
    resolved.filter.kind = options.kind;
    resolved.filter.display = *display;
    resolved.filter.applications =
        keepListed(std::move(content.applications), options.processIDs,
                   [](const SCRunningApplication& application) { return application.processID; });
    resolved.filter.windows = keepListed(std::move(content.windows), options.windowIDs,
                                         [](const SCWindow& window) { return window.windowID; });
    co_return resolved;
}

Task<ResolvedContentFilter> createWindowBasedCropFilter(std::uint32_t windowID, Logger logger) {
    SCShareableContent content = co_await ShareableContent::retrieve(ShareableContentError::Case::timeoutRecordWindow);
    const auto found = std::find_if(content.windows.begin(), content.windows.end(),
                                    [&](const SCWindow& window) { return window.windowID == windowID; });
    if (found == content.windows.end()) {
        throwWindowNotFound(windowID, logger);
    }
    const SCWindow window = *found;
    const SCDisplay* containing = displayContaining(content.displays, &SCDisplay::frame, window.frame);
    if (containing == nullptr) {
        throwWindowOnNoDisplay(windowID, content.displays, logger);
    }
    ResolvedContentFilter resolved;
    resolved.display = *containing;
    resolved.cropRect = CGRectOffset(window.frame, -resolved.display.frame.origin.x, -resolved.display.frame.origin.y);
    resolved.filter = filterShowingOnly(window, resolved.display, std::move(content));
    co_return resolved;
}

}  // namespace zorvane
