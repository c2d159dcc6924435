#include "Zorvane/Platform/Linux/X11/X11Displays.hpp"

#include <algorithm>

#include "Zorvane/Platform/CoreGraphics/CGError.hpp"
#include "Zorvane/Platform/Foundation/NSError.hpp"
#include "Zorvane/Platform/Linux/X11/XDisplayList.hpp"
#include "Zorvane/Platform/Linux/X11/XSession.hpp"

namespace zorvane {

std::vector<CGDirectDisplayID> X11Displays::activeDisplayList() {
    try {
        std::vector<CGDirectDisplayID> displayIDs;
        for (const XDisplay& display : readDisplays(*session_->query())) {
            displayIDs.push_back(display.displayID);
        }
        return displayIDs;
    } catch (const NSError& error) {
        throw CGErrorDescription(CGError::invalidConnection, error.localizedDescription());
    }
}

std::optional<CGDisplayProperties> X11Displays::properties(CGDirectDisplayID displayID) {
    try {
        const auto displays = readDisplays(*session_->query());
        const auto display = std::find_if(displays.begin(), displays.end(),
                                          [&](const XDisplay& each) { return each.displayID == displayID; });
        return display == displays.end() ? std::nullopt : std::optional(display->properties);
    } catch (const NSError&) {
        return std::nullopt;  // without a server there is no such display
    }
}

std::optional<CGDisplayMode> X11Displays::displayMode(CGDirectDisplayID displayID) {
    const auto display = properties(displayID);
    if (!display) {
        return std::nullopt;
    }
    const auto width = static_cast<std::uint32_t>(display->bounds.size.width);
    const auto height = static_cast<std::uint32_t>(display->bounds.size.height);
    return CGDisplayMode{.width = width, .height = height, .pixelWidth = width, .pixelHeight = height};
}

}  // namespace zorvane
