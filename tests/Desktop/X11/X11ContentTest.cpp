#include <algorithm>
#include <thread>

#include <unistd.h>

#include "tests/Desktop/X11/X11StreamFixture.hpp"

namespace zorvane {
namespace {

std::optional<SCWindow> find(const SCShareableContent& content, std::uint32_t windowID) {
    const auto window = std::find_if(content.windows.begin(), content.windows.end(),
                                     [&](const SCWindow& each) { return each.windowID == windowID; });
    return window == content.windows.end() ? std::nullopt : std::optional(*window);
}

/// Without a window manager.
using X11ContentTest = X11StreamTest;

TEST_F(X11ContentTest, WindowsAreListedFrontToBackWithWhatTheySayOfThemselves) {
    const auto back = client_.makeWindow({10, 20, 100, 50}, red);
    const auto front = client_.makeManagedWindow({50, 60, 200, 150},
                                                 "Gr\xC3\xBC\xC3\x9F"
                                                 "e",
                                                 "Tester");

    const auto content = contentOf(capture());

    ASSERT_EQ(content.windows.size(), 2U);
    EXPECT_EQ(content.windows[0].windowID, front);
    EXPECT_EQ(content.windows[0].title,
              "Gr\xC3\xBC\xC3\x9F"
              "e");
    EXPECT_EQ(content.windows[0].frame, CGRect::make(50, 60, 200, 150));
    EXPECT_TRUE(content.windows[0].isOnScreen);
    ASSERT_TRUE(content.windows[0].owningApplication);
    EXPECT_EQ(content.windows[0].owningApplication->processID, getpid());
    EXPECT_EQ(content.windows[0].owningApplication->applicationName, "Tester");
    EXPECT_EQ(content.windows[1].windowID, back);
    EXPECT_FALSE(content.windows[1].title);
    ASSERT_TRUE(content.windows[1].owningApplication) << "the server knows who is connected";
    EXPECT_EQ(content.windows[1].owningApplication->processID, getpid());
}

TEST_F(X11ContentTest, AnApplicationIsListedOnceHoweverManyWindowsItHas) {
    client_.makeManagedWindow({0, 0, 10, 10}, "one", "Tester");
    client_.makeManagedWindow({0, 0, 10, 10}, "two", "Tester");
    const auto content = contentOf(capture());
    ASSERT_EQ(content.applications.size(), 1U);
    EXPECT_EQ(content.applications[0].processID, getpid());
}

TEST_F(X11ContentTest, WindowsThatVanishWhileTheyAreReadDoNoHarm) {
    const auto staying = client_.makeWindow({0, 0, 10, 10}, red);
    std::jthread flicker([&](const std::stop_token& stop) {
        X11TestClient other;
        while (!stop.stop_requested()) {
            other.closeWindow(other.makeWindow({0, 0, 10, 10}, blue));
        }
    });
    for (int round = 0; round < 50; ++round) {
        EXPECT_TRUE(find(contentOf(capture()), staying));
    }
}

/// On the desktop that the tests run in, whose window manager decorates windows.
TEST(X11Desktop, AWindowsFrameIncludesItsDecoration) {
    if (!std::getenv("DISPLAY")) {
        GTEST_SKIP() << "DISPLAY isn't set: run inside scripts/with-desktop";
    }
    X11TestClient client;
    const auto windowID = client.makeManagedWindow({300, 200, 220, 130}, "Decorated", "Tester");
    const auto capture = makeLinuxPlatform().screenCapture;
    const auto decorated = [&] {
        const auto window = find(contentOf(*capture, SCShareableContentScope::onScreenWithoutDesktop), windowID);
        return window && window->frame.size.height > 130 ? window : std::nullopt;
    };
    auto window = decorated();
    for (; !window; window = decorated()) {
        std::this_thread::yield();  // the window manager has its own time; a test that hangs is ended by ctest
    }
    EXPECT_GE(window->frame.size.width, 220);
    EXPECT_EQ(window->title, "Decorated");
}

}  // namespace
}  // namespace zorvane
