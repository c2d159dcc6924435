// The layers in which windows are stacked.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>

namespace zorvane {

/// Windows of a higher level cover those of a lower one.
using CGWindowLevel = std::int32_t;

enum class CGWindowLevelKey : std::uint8_t {
    baseWindow,
    minimumWindow,
    desktopWindow,  ///< the desktop's picture
    backstopMenu,
    normalWindow,
    floatingWindow,
    tornOffMenuWindow,
    dockWindow,
    mainMenuWindow,
    statusWindow,
    modalPanelWindow,
    popUpMenuWindow,
    draggingWindow,
    screenSaverWindow,
    maximumWindow,
    overlayWindow,
    helpWindow,
    utilityWindow,
    desktopIconWindow,
    cursorWindow,
    assistiveTechHighWindow,
};

/// The level of windows of this kind.
constexpr CGWindowLevel CGWindowLevelForKey(CGWindowLevelKey key) {
    // The lowest and the highest levels are kept for the window server itself.
    constexpr CGWindowLevel base = std::numeric_limits<CGWindowLevel>::min();
    constexpr CGWindowLevel minimum = base + 5;
    constexpr CGWindowLevel desktop = minimum + 20;
    constexpr CGWindowLevel maximum = std::numeric_limits<CGWindowLevel>::max() - 16;
    constexpr std::array<CGWindowLevel, 21> levels{
        base, minimum, desktop, -20,     0,   3,   3,  20,           24,          25,   8,
        101,  500,     1000,    maximum, 102, 200, 19, desktop + 20, maximum - 1, 1500,
    };
    return levels.at(static_cast<std::size_t>(key));
}

}  // namespace zorvane
