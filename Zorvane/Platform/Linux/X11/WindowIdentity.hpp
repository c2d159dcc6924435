// Which application's window a top-level window of the X server is.
#pragma once

#include <cstdint>
#include <optional>

#include "Zorvane/Platform/ScreenCaptureKit/SCShareableContent.hpp"

namespace zorvane {

class XConnection;
struct WindowAtoms;

/// The window as filters know it, by number and owner only. A window manager's frame goes by the window inside of it;
/// a window without a frame is itself. Nothing if the window has gone. A few round trips.
std::optional<SCWindow> identifyWindow(const XConnection& connection, const WindowAtoms& atoms, std::uint32_t topLevel);

/// The child of the root window that `window` lies in, or is; 0 if it has gone.
std::uint32_t topLevelOf(const XConnection& connection, std::uint32_t window);

}  // namespace zorvane
