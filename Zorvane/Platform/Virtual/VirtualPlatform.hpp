// The embedded desktop as a platform.
#pragma once

#include <memory>

#include "Zorvane/Platform/Platform.hpp"
#include "Zorvane/Platform/Virtual/VirtualDesktop.hpp"

namespace zorvane {

/// For hosts without a desktop, and for trying things out: one main display "Virtual Display" of 1920 by 1080 with
/// something that moves for four seconds and rests for two, a window, somebody at mouse and keyboard, a soft tone, a
/// camera, a microphone, a phone, the machine's clock, real media files.
Platform makeVirtualPlatform();

/// A scripted desktop on its own clock. Without `mediaWriting` media is written to memory, by a `VirtualMediaWriting`.
Platform makeVirtualPlatform(std::shared_ptr<VirtualDesktop> desktop,
                             std::shared_ptr<AVMediaWriting> mediaWriting = nullptr);

}  // namespace zorvane
