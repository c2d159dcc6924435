// A window as the window server tells of it, as a plain value.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Zorvane/Platform/CoreGraphics/CGGeometry.hpp"
#include "Zorvane/Platform/CoreGraphics/CGWindowList.hpp"

namespace zorvane::CGInterop {

struct Window {
    CGWindowID windowID = kCGNullWindowID;
    CGRect frame;  ///< points, global coordinates, with the decoration
    std::optional<std::string> title;
    std::int64_t layer = 0;
    double alpha = 1;  ///< 0 to 1
    bool isOnScreen = false;
    std::int64_t memoryUsage = 0;  ///< bytes; an estimate
    CGWindowSharingType sharingState = CGWindowSharingType::readOnly;
    std::string ownerName;      ///< empty when unknown
    std::int32_t ownerPID = 0;  ///< 0 when unknown

    bool operator==(const Window&) const = default;

    /// The windows of the current platform, front to back; none if it can't be asked. Any thread.
    static std::vector<Window> getWindows(CGWindowListOption option, CGWindowID relativeToWindow);
};

}  // namespace zorvane::CGInterop
