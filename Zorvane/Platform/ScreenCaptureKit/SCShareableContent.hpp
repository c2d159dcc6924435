// What there is on the screen to be captured: plain values of one moment.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Zorvane/Platform/CoreGraphics/CGDisplays.hpp"
#include "Zorvane/Platform/CoreGraphics/CGGeometry.hpp"

namespace zorvane {

struct SCDisplay {
    CGDirectDisplayID displayID = 0;
    CGRect frame;  ///< points, global coordinates

    /// "SCDisplay[id:1 frame:(0, 0, 1920, 1080)]"
    std::string debugDescription() const;
};

struct SCRunningApplication {
    std::int32_t processID = 0;
    std::string bundleIdentifier;
    std::string applicationName;

    bool operator==(const SCRunningApplication&) const = default;
};

struct SCWindow {
    std::uint32_t windowID = 0;
    CGRect frame;  ///< points, global coordinates
    std::optional<std::string> title;
    std::int32_t windowLayer = 0;
    bool isOnScreen = false;
    std::optional<SCRunningApplication> owningApplication;

    bool operator==(const SCWindow&) const = default;
};

/// Lists in the window server's order: windows front to back.
struct SCShareableContent {
    std::vector<SCDisplay> displays;
    std::vector<SCWindow> windows;
    std::vector<SCRunningApplication> applications;
};

/// Which windows a retrieval is to list.
enum class SCShareableContentScope : std::uint8_t {
    all,                     ///< desktop windows and windows that are off screen too
    onScreenWithoutDesktop,  ///< on-screen windows only, without desktop windows
};

}  // namespace zorvane
