// The Linux desktop as a platform.
#pragma once

#include "Zorvane/Platform/Platform.hpp"

namespace zorvane {

/// Every backend of the Linux desktop. Making it connects to nothing: each part reaches its service when it is first
/// asked something.
Platform makeLinuxPlatform();

}  // namespace zorvane
