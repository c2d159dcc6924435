#include "Zorvane/Platform/CoreGraphics/CGDisplays.hpp"

#include "Zorvane/Platform/CoreGraphics/CGError.hpp"

namespace zorvane {

CGDirectDisplayID CGMainDisplayID(CGDisplays& displays) {
    try {
        const auto active = displays.activeDisplayList();
        return active.empty() ? 0 : active.front();
    } catch (const CGErrorDescription&) {
        return 0;
    }
}

}  // namespace zorvane
