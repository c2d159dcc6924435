#include "Zorvane/ZVPlatform.hpp"

#include "Zorvane/Platform/Linux/LinuxPlatform.hpp"
#include "Zorvane/Platform/Virtual/VirtualPlatform.hpp"

namespace zorvane {

void ZVPlatform::use(ZVPlatformKind kind) {
    Platform::install(kind == ZVPlatformKind::virtualDesktop ? makeVirtualPlatform() : makeLinuxPlatform());
}

}  // namespace zorvane
