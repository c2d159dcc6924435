// What an X server's root window says of the desktop as a whole.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "Zorvane/Platform/Linux/X11/XWindow.hpp"

namespace zorvane {

class XConnection;
struct WindowAtoms;

/// A plain value of one moment.
struct XWindowOrder {
    /// Front to back: the windows that the window manager takes care of; without one, all children of the root window.
    /// Each once, also if the list says otherwise.
    std::vector<std::uint32_t> windowIDs;
    /// A window of the window manager's own, which lives as long as that does; 0 if it has none, or there is none.
    std::uint32_t windowManagerCheck = 0;
    bool hasWindowManager = false;
    std::optional<std::uint32_t> currentDesktop;
    std::uint32_t activeWindow = 0;  ///< 0 for none

    /// Whether a window of `windowIDs` belongs to the desktop: without a window manager there are unmapped ones that
    /// programs keep for purposes of their own.
    bool lists(const XWindow& window) const { return hasWindowManager || window.isViewable; }

    /// Asks the server, in up to three round trips. A list that a window manager left behind doesn't count.
    static XWindowOrder read(const XConnection& connection, const WindowAtoms& atoms);
};

}  // namespace zorvane
