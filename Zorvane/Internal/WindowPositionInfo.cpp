#include "Zorvane/Internal/WindowPositionInfo.hpp"

#include <exception>

#include "Zorvane/Internal/Concurrency/Executor.hpp"
#include "Zorvane/Platform/CoreMedia/CMClock.hpp"
#include "Zorvane/Platform/Platform.hpp"

namespace zorvane {
namespace {

std::vector<CGWindowDescription> describe(const std::vector<CGWindowID>& ids) {
    const PoolBlockingScope blocking;
    try {
        return Platform::current()->windowList->createDescriptionFromArray(ids);
    } catch (const std::exception&) {
        return {};
    }
}

}  // namespace

std::vector<WindowPositionInfo> WindowPositionInfo::getWindowPositions(const std::vector<CGWindowID>& ids) {
    const double timestamp = hostTimeClockTime().seconds();
    std::vector<WindowPositionInfo> positions;
    for (const CGWindowDescription& window : describe(ids)) {
        positions.push_back({.windowID = window.number,
                             .topLeftFrame = window.bounds,
                             .layer = window.layer,
                             .alpha = window.alpha,
                             .isOnScreen = window.isOnScreen,
                             .timestamp = timestamp});
    }
    return positions;
}

}  // namespace zorvane
