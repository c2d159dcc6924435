#include "Zorvane/Sources/ZVWindow.hpp"

#include <algorithm>
#include <climits>

#include "tests/Support/LogCapture.hpp"
#include "tests/Support/VirtualWindows.hpp"
#include "tests/Support/VirtualWorld.hpp"

namespace zorvane {
namespace {

using testing::idsOf;
using testing::someApplication;
using testing::window;
using Filter = ZVWindow::FilterOptions;
using IDs = std::vector<std::uint32_t>;

class ZVWindowTest : public testing::VirtualWorldTest {};

TEST_F(ZVWindowTest, TheDefaultFilterLeavesApplicationsOrdinaryWindowsInTheirOrder) {
    const LogCapture log(ZVLogger::shared());
    const CGRect bar = CGRect::make(0, 0, 320, 20);
    VirtualWindow indicator = window(4, SCRunningApplication{20, "", "Window Server"});
    indicator.window.title = "StatusIndicator";
    VirtualWindow impostor = window(5);
    impostor.window.title = "StatusIndicator";
    desktop->now().setWindows({
        window(1, someApplication, bar, 24),
        window(9),
        window(2, SCRunningApplication{20, "", ""}),
        window(3, SCRunningApplication{0, "", "Nobody"}),
        indicator,
        impostor,
        window(6, std::nullopt),
        window(7, someApplication, bar, 3),
    });
    EXPECT_EQ(idsOf(ZVWindow::windows()), (IDs{9, 5}));
    EXPECT_TRUE(log.has(ZVLogLevel::info, "Reporting 2 windows."));
    const auto all = ZVWindow::windows(Filter::onlyOnScreen);
    EXPECT_EQ(idsOf(all), (IDs{1, 9, 2, 3, 4, 5, 6, 7}));
    desktop->now().closeWindow(9).closeWindow(1);
    advance(0.1);
    EXPECT_EQ(idsOf(ZVWindow::filtered(all, Filter::default_)), IDs{5}) << "by what they are now";
    EXPECT_EQ(idsOf(ZVWindow::filtered(all, Filter::onlyOnScreen)), (IDs{2, 3, 4, 5, 6, 7}));
}

TEST_F(ZVWindowTest, DescribesItselfAndIsWhatItsIDSays) {
    VirtualWindow untitled = window(2);
    untitled.window.title = std::nullopt;
    desktop->now().setWindows({window(1, someApplication, CGRect::make(1, 2, 30, 40)), untitled});
    const auto windows = ZVWindow::windows();
    EXPECT_EQ(windows.at(0)->debugDescription(), "ZVWindow[id:1 title:Window 1 level:0 frame:(1, 2, 30, 40)]");
    EXPECT_EQ(windows.at(1)->debugDescription(), "ZVWindow[id:2 title:nil level:0 frame:(0, 0, 100, 80)]");
    EXPECT_FALSE(*windows.at(0) == *windows.at(1));
    EXPECT_TRUE(*windows.at(0) == *ZVWindow::windows().at(0));
    EXPECT_EQ(std::hash<ZVWindow>()(*windows.at(1)), std::hash<std::uint32_t>()(2));
}

TEST(ZVWindowLevel, LevelsAreInTheOrderInWhichWindowsCoverEachOther) {
    using Level = ZVWindow::Level;
    const Level ascending[] = {
        Level::baseWindow,
        Level::minimumWindow,
        Level::desktopWindow,
        Level::desktopIconWindow,
        Level::backstopMenu,
        Level::normal,
        Level::floating,
        Level::modalPanel,
        Level::utilityWindow,
        Level::mainMenu,
        Level::statusBar,
        Level::popUpMenu,
        Level::overlayWindow,
        Level::helpWindow,
        Level::draggingWindow,
        Level::screenSaver,
        Level::assistiveTechHighWindow,
        Level::cursorWindow,
        Level::maximumWindow,
    };
    EXPECT_TRUE(std::ranges::is_sorted(ascending));
    EXPECT_EQ(std::ranges::adjacent_find(ascending), std::end(ascending)) << "and none is like another";
    EXPECT_EQ(Level::submenu, Level::floating);
    EXPECT_EQ(Level::tornOffMenu, Level::floating);
    EXPECT_EQ(Level::screenSaverWindow, Level::screenSaver);
    EXPECT_EQ(Level::baseWindow.rawValue, INT_MIN);
    EXPECT_EQ(Level::desktopWindow.rawValue, -2147483623);
    EXPECT_EQ(Level::maximumWindow.rawValue, 2147483631);
}

}  // namespace
}  // namespace zorvane
