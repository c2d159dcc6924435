// From what is known of the machine to what is allowed, in words.
#pragma once

#include "Zorvane/Platform/Linux/PipeWire/PipeWireSocket.hpp"
#include "Zorvane/Platform/Linux/System/CameraNodes.hpp"
#include "Zorvane/Platform/Linux/X11/XServerFacts.hpp"
#include "Zorvane/ZVPermission.hpp"

namespace zorvane {

/// What surrounds the process.
struct SessionFacts {
    bool isWayland = false;
    bool isFlatpak = false;  ///< the process runs in such a sandbox
};

/// Screen recording, input monitoring and accessibility control: the X server's matter.
ZVPermissionReport judgeDesktop(ZVPermission permission, const XServerFacts& server, const SessionFacts& session);

/// Microphones and the system's sound: PipeWire's.
ZVPermissionReport judgeSound(const PipeWireStatus& pipeWire, const SessionFacts& session);

/// Cameras: PipeWire's, and that of the device files.
ZVPermissionReport judgeCamera(const PipeWireStatus& pipeWire, const CameraNodes& nodes, const SessionFacts& session);

}  // namespace zorvane
