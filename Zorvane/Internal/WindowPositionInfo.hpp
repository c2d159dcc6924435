// Where windows are at one moment.
#pragma once

#include <cstdint>
#include <vector>

#include "Zorvane/Platform/CoreGraphics/CGGeometry.hpp"
#include "Zorvane/Platform/CoreGraphics/CGWindowList.hpp"

namespace zorvane {

struct WindowPositionInfo {
    CGWindowID windowID = kCGNullWindowID;
    CGRect topLeftFrame;  ///< points, global coordinates, origin at the top left
    std::int64_t layer = 0;
    double alpha = 1;  ///< 0 to 1
    bool isOnScreen = false;
    double timestamp = 0;  ///< seconds on the host time clock, right before the window server was asked

    bool operator==(const WindowPositionInfo&) const = default;

    /// The windows among `ids` that exist, on the current platform; none if it can't be asked. Blocks for the window
    /// server. Any thread.
    static std::vector<WindowPositionInfo> getWindowPositions(const std::vector<CGWindowID>& ids);
};

}  // namespace zorvane
