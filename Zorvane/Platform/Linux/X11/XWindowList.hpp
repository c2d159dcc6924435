// The windows of an X server's desktop.
#pragma once

#include <vector>

#include "Zorvane/Platform/Linux/X11/XWindow.hpp"

namespace zorvane {

class XConnection;

/// The applications' windows, front to back, as the window manager lists them; without one, the mapped children of the
/// root window. A window that goes away while it is being read is left out. Throws `NSError`.
///
/// For who asks once; who asks again and again has a `DesktopModel`.
std::vector<XWindow> readWindows(const XConnection& connection);

}  // namespace zorvane
