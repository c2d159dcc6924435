// A window of the desktop, as the X server and the window's own program tell of it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Zorvane/Platform/CoreGraphics/CGGeometry.hpp"
#include "Zorvane/Platform/CoreGraphics/CGWindowLevel.hpp"

namespace zorvane {

/// A plain value of one moment.
struct XWindow {
    std::uint32_t windowID = 0;
    /// With the window manager's decoration, without a shadow that the program draws itself.
    CGRect frame;
    std::optional<std::string> title;
    std::string instanceName;    ///< the first name of WM_CLASS; empty when there is none
    std::string className;       ///< the second
    std::int32_t processID = 0;  ///< see `WindowOwnerQuery`; 0 when unknown
    CGWindowLevel level = 0;
    double opacity = 1;       ///< 0 to 1
    bool isViewable = false;  ///< mapped, and so is all that it lies in
    /// Viewable, not minimised, and on the virtual desktop that is shown, or on all of them.
    bool isOnScreen = false;

    bool operator==(const XWindow&) const = default;
};

}  // namespace zorvane
