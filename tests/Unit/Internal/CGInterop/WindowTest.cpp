#include "Zorvane/Internal/CGInterop/Window.hpp"

#include "Zorvane/Interop/WindowListHelper.hpp"
#include "tests/Support/VirtualWindows.hpp"
#include "tests/Support/VirtualWorld.hpp"

namespace zorvane {
namespace {

using CGInterop::Window;
using IDs = std::vector<CGWindowID>;

class CGInteropWindowTest : public testing::VirtualWorldTest {};

TEST_F(CGInteropWindowTest, TellsOfAWindowWhatTheWindowServerTells) {
    const SCRunningApplication editor{40, "org.editor", "Editor"};
    desktop->now().openWindow(testing::window(3, editor, CGRect::make(1, 2, 30, 40)));
    const auto windows = Window::getWindows(CGWindowListOption::onScreenOnly, kCGNullWindowID);
    ASSERT_EQ(windows.size(), 1U);
    EXPECT_EQ(windows[0].windowID, 3U);
    EXPECT_EQ(windows[0].frame, CGRect::make(1, 2, 30, 40));
    EXPECT_EQ(windows[0].title, "Window 3");
    EXPECT_EQ(windows[0].layer, 0);
    EXPECT_TRUE(windows[0].isOnScreen);
    EXPECT_EQ(windows[0].memoryUsage, 30 * 40 * 4);
    EXPECT_EQ(windows[0].ownerName, "Editor");
    EXPECT_EQ(windows[0].ownerPID, 40);
}

TEST_F(CGInteropWindowTest, TheListOfIDsIsAbsentWhenThereIsNoWindow) {
    EXPECT_EQ(CGWindowListCreateWrapper(CGWindowListOption::all, kCGNullWindowID), std::nullopt);
    desktop->now().openWindow(testing::window(3)).openWindow(testing::window(4)).minimizeWindow(3);
    for (const auto option : {CGWindowListOption::all, CGWindowListOption::onScreenOnly}) {
        EXPECT_EQ(CGWindowListCreateWrapper(option, kCGNullWindowID), (IDs{4, 3}));
        EXPECT_FALSE(Window::getWindows(option, kCGNullWindowID).back().isOnScreen);
    }
}

}  // namespace
}  // namespace zorvane
