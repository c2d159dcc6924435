// The displays that an X server drives.
#pragma once

#include <vector>

#include "Zorvane/Platform/CoreGraphics/CGDisplays.hpp"

namespace zorvane {

class XConnection;

struct XDisplay {
    CGDirectDisplayID displayID = 0;  ///< the serial number: unique, and the same after a reconnection
    CGDisplayProperties properties;
    double refreshRate = 0;  ///< Hz; 0 when unknown
};

/// The active displays, the main one first. A point is a pixel of the framebuffer, so bounds are in both; a monitor
/// that is scaled by a RANDR transform shows more or fewer of them than it has dots, which nobody but the panel sees.
///
/// A display is what RANDR 1.5 calls a monitor: a panel, the tiles of one panel together, or a part of a panel that the
/// user has set apart. A server without monitors has one display, the root window. Throws `NSError`.
std::vector<XDisplay> readDisplays(const XConnection& connection);

}  // namespace zorvane
