#include "Zorvane/Platform/CoreGraphics/CGWindowLevel.hpp"
#include "Zorvane/Sources/ZVWindow.hpp"

namespace zorvane {
namespace {

using Key = CGWindowLevelKey;

constexpr ZVWindow::Level standard(Key key) {
    return {CGWindowLevelForKey(key)};
}

}  // namespace

constinit const ZVWindow::Level ZVWindow::Level::baseWindow = standard(Key::baseWindow);
constinit const ZVWindow::Level ZVWindow::Level::desktopIconWindow = standard(Key::desktopIconWindow);
constinit const ZVWindow::Level ZVWindow::Level::minimumWindow = standard(Key::minimumWindow);
constinit const ZVWindow::Level ZVWindow::Level::desktopWindow = standard(Key::desktopWindow);
constinit const ZVWindow::Level ZVWindow::Level::backstopMenu = standard(Key::backstopMenu);
constinit const ZVWindow::Level ZVWindow::Level::normal{0};
constinit const ZVWindow::Level ZVWindow::Level::floating{3};
constinit const ZVWindow::Level ZVWindow::Level::submenu{3};
constinit const ZVWindow::Level ZVWindow::Level::tornOffMenu{3};
constinit const ZVWindow::Level ZVWindow::Level::modalPanel{8};
constinit const ZVWindow::Level ZVWindow::Level::utilityWindow = standard(Key::utilityWindow);
constinit const ZVWindow::Level ZVWindow::Level::mainMenu{24};
constinit const ZVWindow::Level ZVWindow::Level::statusBar{25};
constinit const ZVWindow::Level ZVWindow::Level::popUpMenu{101};
constinit const ZVWindow::Level ZVWindow::Level::screenSaver{1000};
constinit const ZVWindow::Level ZVWindow::Level::overlayWindow = standard(Key::overlayWindow);
constinit const ZVWindow::Level ZVWindow::Level::helpWindow = standard(Key::helpWindow);
constinit const ZVWindow::Level ZVWindow::Level::draggingWindow = standard(Key::draggingWindow);
constinit const ZVWindow::Level ZVWindow::Level::screenSaverWindow = standard(Key::screenSaverWindow);
constinit const ZVWindow::Level ZVWindow::Level::assistiveTechHighWindow = standard(Key::assistiveTechHighWindow);
constinit const ZVWindow::Level ZVWindow::Level::cursorWindow = standard(Key::cursorWindow);
constinit const ZVWindow::Level ZVWindow::Level::maximumWindow = standard(Key::maximumWindow);

}  // namespace zorvane
