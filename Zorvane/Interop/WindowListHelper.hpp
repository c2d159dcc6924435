// The ids of the window server's windows.
#pragma once

#include <optional>
#include <vector>

#include "Zorvane/Platform/CoreGraphics/CGWindowList.hpp"

namespace zorvane {

/// The ids of the windows of the current platform, front to back; nothing when it lists none. Any thread.
std::optional<std::vector<CGWindowID>> CGWindowListCreateWrapper(CGWindowListOption option,
                                                                 CGWindowID relativeToWindow);

}  // namespace zorvane
