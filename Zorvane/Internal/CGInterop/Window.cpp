#include "Zorvane/Internal/CGInterop/Window.hpp"

#include <utility>

#include "Zorvane/Platform/Platform.hpp"

namespace zorvane::CGInterop {
namespace {

Window makeWindow(CGWindowDescription&& description) {
    Window window;
    window.windowID = description.number;
    window.frame = description.bounds;
    window.title = std::move(description.name);
    window.layer = description.layer;
    window.alpha = description.alpha;
    window.isOnScreen = description.isOnScreen;
    window.memoryUsage = description.memoryUsage;
    window.sharingState = description.sharingState;
    window.ownerName = std::move(description.ownerName);
    window.ownerPID = description.ownerPID;
    return window;
}

}  // namespace

std::vector<Window> Window::getWindows(CGWindowListOption option, CGWindowID relativeToWindow) {
    auto descriptions = Platform::current()->windowList->copyWindowInfo(option, relativeToWindow);
    std::vector<Window> windows;
    windows.reserve(descriptions.size());
    for (CGWindowDescription& description : descriptions) {
        windows.push_back(makeWindow(std::move(description)));
    }
    return windows;
}

}  // namespace zorvane::CGInterop
