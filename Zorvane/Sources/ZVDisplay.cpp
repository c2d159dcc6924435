#include "Zorvane/Sources/ZVDisplay.hpp"

#include <fmt/format.h>

#include <algorithm>

#include "Zorvane/Internal/CGInterop/Display.hpp"
#include "Zorvane/Internal/Logger.hpp"

namespace zorvane {

std::vector<std::shared_ptr<ZVDisplay>> ZVDisplay::displays() {
    std::vector<std::shared_ptr<ZVDisplay>> displays;
    for (const CGInterop::Display& active : CGInterop::Display::getActiveDisplays()) {
        std::shared_ptr<ZVDisplay> display(new ZVDisplay);
        display->id_ = active.serialNumber;
        display->displayID_ = active.displayID;
        display->isBuiltIn_ = active.isBuiltIn;
        display->localizedName_ = active.displayName();
        display->isMain_ = active.isMain;
        display->frame_ = active.frame;
        displays.push_back(std::move(display));
    }
    std::ranges::sort(displays, {}, [](const auto& display) { return display->displayID(); });
    Logger::forType<ZVDisplay>().info([&] { return fmt::format("Reporting {} displays.", displays.size()); });
    return displays;
}

std::string ZVDisplay::debugDescription() const {
    return fmt::format("ZVDisplay[id:{} name:{} isMain:{} frame:{}]", id_, localizedName_, isMain_,
                       zorvane::debugDescription(frame_));
}

}  // namespace zorvane
