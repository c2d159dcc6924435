// Which applications' windows a top-level window of the X server shows.
#pragma once

#include <cstdint>
#include <vector>

#include "Zorvane/Platform/ScreenCaptureKit/SCShareableContent.hpp"

namespace zorvane {

class XConnection;
struct WindowAtoms;

/// The windows as filters know them, by number and owner only. A window manager's frame goes by the windows inside of
/// it, of which some have several; a window without a frame is itself. None if the window has gone. A few round trips.
///
/// From now on the server tells of what may change the answer: of the frame's family, and of the properties of what
/// lies in it; see `tellsIdentity`.
std::vector<SCWindow> identifyWindow(const XConnection& connection, const WindowAtoms& atoms, std::uint32_t topLevel);

/// Whether a window may go by another name when this property changes.
bool tellsIdentity(const WindowAtoms& atoms, std::uint32_t property);

/// The child of the root window that `window` lies in, or is; 0 if it has gone.
std::uint32_t topLevelOf(const XConnection& connection, std::uint32_t window);

}  // namespace zorvane
