// The windows of an X server's desktop.
#pragma once

#include <vector>

#include "Zorvane/Platform/ScreenCaptureKit/SCShareableContent.hpp"

namespace zorvane {

class XConnection;

/// The applications' windows, front to back, as the window manager lists them; without one, the children of the root
/// window. A frame includes the window manager's decoration and leaves out a shadow that a program draws itself. A
/// window that goes away while it is being read is left out. Throws `NSError`.
///
/// An application is a process that owns windows; its name and identifier are the window's class.
std::vector<SCWindow> readWindows(const XConnection& connection, SCShareableContentScope scope);

}  // namespace zorvane
