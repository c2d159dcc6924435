#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "Zorvane/Platform/AppKit/NSWorkspace.hpp"
#include "Zorvane/Platform/Linux/LinuxPlatform.hpp"
#include "tests/Support/PrivateXServer.hpp"
#include "tests/Support/TemporaryDirectory.hpp"
#include "tests/Support/WaitUntil.hpp"
#include "tests/Support/X11TestClient.hpp"

namespace zorvane {
namespace {

/// An X server whose window manager the client plays, and one installed application, "org.example.Editor".
class X11WorkspaceTest : public testing::Test {
  protected:
    X11WorkspaceTest() {
        std::filesystem::create_directory(data_.path() / "applications");
        std::ofstream(data_.path() / "applications/org.example.Editor.desktop")
            << "[Desktop Entry]\nType=Application\nName=The Editor\nStartupWMClass=Editor\n";
        setenv("XDG_DATA_HOME", data_.path().c_str(), 1);
        platform_ = makeLinuxPlatform();
    }
    ~X11WorkspaceTest() override { unsetenv("XDG_DATA_HOME"); }

    std::uint32_t makeActiveWindow(const std::string& windowClass) {
        const auto window = client_.makeManagedWindow({0, 0, 10, 10}, "window", windowClass);
        windows_.push_back(window);
        client_.setNumbers(0, "_NET_CLIENT_LIST", "WINDOW", windows_);
        client_.setNumbers(0, "_NET_CLIENT_LIST_STACKING", "WINDOW", windows_);
        client_.setNumbers(0, "_NET_ACTIVE_WINDOW", "WINDOW", {window});
        return window;
    }

    NSWorkspace& workspace() { return *platform_.workspace; }

    TemporaryDirectory data_;
    PrivateXServer server_;
    Platform platform_;
    X11TestClient client_;
    std::vector<std::uint32_t> windows_;
};

TEST_F(X11WorkspaceTest, ApplicationsAreCalledAsTheyAreInstalled) {
    EXPECT_TRUE(workspace().runningApplications().empty());
    EXPECT_FALSE(workspace().frontmostApplication());
    makeActiveWindow("editor");
    const NSRunningApplication editor{
        .processIdentifier = getpid(), .localizedName = "The Editor", .bundleIdentifier = "org.example.Editor"};
    waitUntil([&] { return workspace().frontmostApplication().has_value(); });
    EXPECT_EQ(workspace().frontmostApplication(), editor);
    EXPECT_EQ(workspace().runningApplications(), std::vector{editor});
}

TEST_F(X11WorkspaceTest, OneThatIsNotInstalledIsCalledLikeItsWindows) {
    makeActiveWindow("Unknown");
    waitUntil([&] { return workspace().frontmostApplication().has_value(); });
    EXPECT_EQ(workspace().frontmostApplication()->localizedName, "Unknown");
    EXPECT_EQ(workspace().frontmostApplication()->bundleIdentifier, "Unknown");
}

TEST_F(X11WorkspaceTest, ObserversAreToldWithoutAsking) {
    std::atomic<bool> isConnected = false;
    const auto connected = workspace().observeFrontmostApplication([&] { isConnected = true; });
    waitUntil([&] { return isConnected.load(); });  // what was before the connection, nobody knows
    EXPECT_FALSE(workspace().frontmostApplication());

    // One thread tells them, in this order: who hears of the frontmost one has heard of what happened before it.
    std::atomic<int> ofRunning = 0;
    std::atomic<int> ofFrontmost = 0;
    const auto running = workspace().observeRunningApplications([&] { ++ofRunning; });
    const auto frontmost = workspace().observeFrontmostApplication([&] { ++ofFrontmost; });
    const auto window = makeActiveWindow("One");
    waitUntil([&] { return workspace().frontmostApplication() && ofFrontmost > 0; });
    EXPECT_GT(ofRunning, 0);

    const int runningBefore = ofRunning;
    const int frontmostBefore = ofFrontmost;
    client_.setNumbers(0, "_NET_ACTIVE_WINDOW", "WINDOW", {window});
    waitUntil([&] { return ofFrontmost > frontmostBefore; });
    EXPECT_EQ(ofRunning, runningBefore);

    server_.kill();
    waitUntil([&] { return ofRunning > runningBefore; });
    EXPECT_TRUE(workspace().runningApplications().empty());
}

TEST_F(X11WorkspaceTest, AnObservationMayEndItselfAndThePlatformWithIt) {
    std::atomic<bool> isCalled = false;
    std::atomic<bool> isObserved = false;
    auto workspace = std::exchange(platform_.workspace, nullptr);
    platform_ = {};
    auto observation = workspace->observeFrontmostApplication([&] {
        waitUntil([&] { return isObserved.load(); });
        workspace = nullptr;
        isCalled = true;
    });
    isObserved = true;
    waitUntil([&] { return isCalled.load(); });
    observation.invalidate();
}

TEST_F(X11WorkspaceTest, TheIconIsTheApplicationsOrElseTheWindows) {
    const auto window = makeActiveWindow("Editor");
    EXPECT_FALSE(workspace().icon(getpid() + 1));
    waitUntil([&] { return workspace().frontmostApplication().has_value(); });
    EXPECT_FALSE(workspace().icon(getpid()));

    client_.setNumbers(window, "_NET_WM_ICON", "CARDINAL", {1, 1, 0xFF010203});
    EXPECT_EQ(workspace().icon(getpid()), (NSImage{.width = 1, .height = 1, .pixels = {1, 2, 3, 255}}));
    client_.setNumbers(window, "_NET_WM_ICON", "CARDINAL", {0xFFFFFFFF, 0xFFFFFFFF, 1});
    EXPECT_FALSE(workspace().icon(getpid()));
}

}  // namespace
}  // namespace zorvane
