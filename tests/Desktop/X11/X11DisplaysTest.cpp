#include <gtest/gtest.h>

#include <cstdlib>

#include "Zorvane/Platform/CoreGraphics/CGDisplays.hpp"
#include "Zorvane/Platform/CoreGraphics/CGError.hpp"
#include "Zorvane/Platform/Linux/LinuxPlatform.hpp"
#include "tests/Support/EDIDBuilder.hpp"
#include "tests/Support/PrivateXServer.hpp"
#include "tests/Support/X11TestClient.hpp"

namespace zorvane {
namespace {

CGDisplayProperties propertiesAt(CGDisplays& displays, std::size_t index) {
    return displays.properties(displays.activeDisplayList().at(index)).value();
}

TEST(X11Displays, AScreenWithoutAMonitorIsOneDisplay) {
    const PrivateXServer server("640x480x24");
    const auto displays = makeLinuxPlatform().displays;

    const auto list = displays->activeDisplayList();
    ASSERT_EQ(list.size(), 1U);
    const auto display = displays->properties(list[0]).value();
    EXPECT_TRUE(display.isMain && display.isActive);
    EXPECT_FALSE(display.isBuiltIn);
    EXPECT_EQ(display.bounds, CGRect::make(0, 0, 640, 480));
    EXPECT_NE(display.serialNumber, 0U);
    EXPECT_EQ(display.mirrors, 0U);
    EXPECT_EQ(display.rotation, 0);
    const auto mode = displays->displayMode(list[0]).value();
    EXPECT_EQ(mode.width, 640U);
    EXPECT_EQ(mode.pixelWidth, 640U);
    EXPECT_EQ(mode.pixelHeight, 480U);
    EXPECT_FALSE(displays->properties(list[0] + 1));
    EXPECT_FALSE(displays->displayMode(list[0] + 1));
}

TEST(X11Displays, AServerWithoutRANDRHasItsRootWindowAsDisplay) {
    const PrivateXServer server("320x240x24", "RANDR");
    const auto displays = makeLinuxPlatform().displays;
    EXPECT_EQ(propertiesAt(*displays, 0).bounds, CGRect::make(0, 0, 320, 240));
    EXPECT_TRUE(propertiesAt(*displays, 0).isMain);
}

TEST(X11Displays, ThePanelSaysWhatItIs) {
    const PrivateXServer server;
    X11TestClient client;
    client.setEDID(makeEDID(4711, "Panel 27"));
    const auto displays = makeLinuxPlatform().displays;

    const auto display = propertiesAt(*displays, 0);
    EXPECT_EQ(display.vendorNumber, 0x10ACU);
    EXPECT_EQ(display.modelNumber, 0x1234U);
    EXPECT_EQ(display.serialNumber, 4711U);
    EXPECT_EQ(display.localizedName, "Panel 27");
}

TEST(X11Displays, TheMainDisplayComesFirstAndMirrorsAreTold) {
    const PrivateXServer server("640x480x24");
    X11TestClient client;
    client.setMonitor("left", {0, 0, 400, 480}, false, true);
    client.setMonitor("right", {400, 0, 240, 480}, true, false);
    client.setMonitor("copy", {0, 0, 400, 480}, false, false);
    const auto displays = makeLinuxPlatform().displays;

    ASSERT_EQ(displays->activeDisplayList().size(), 3U);
    const auto main = propertiesAt(*displays, 0);
    EXPECT_TRUE(main.isMain);
    EXPECT_EQ(main.bounds, CGRect::make(400, 0, 240, 480));
    const auto second = propertiesAt(*displays, 1);
    const auto third = propertiesAt(*displays, 2);
    EXPECT_FALSE(second.isMain || third.isMain);
    EXPECT_EQ(second.mirrors, 0U);
    EXPECT_EQ(third.mirrors, displays->activeDisplayList()[1]);
}

TEST(X11Displays, WithoutAServerTheErrorSaysWhatToDo) {
    std::string unreachable;
    {
        const PrivateXServer server;
        unreachable = server.name();
    }
    setenv("DISPLAY", unreachable.c_str(), 1);
    const auto displays = makeLinuxPlatform().displays;
    try {
        displays->activeDisplayList();
        FAIL() << "there is no server";
    } catch (const CGErrorDescription& error) {
        EXPECT_EQ(error.error(), CGError::invalidConnection);
        EXPECT_EQ(error.localizedDescription(), "Can't reach the X server \"" + unreachable +
                                                    "\". Is DISPLAY right, does the server run, and does it let this "
                                                    "user in (XAUTHORITY)?");
    }
    unsetenv("DISPLAY");
    EXPECT_THROW(displays->activeDisplayList(), CGErrorDescription);
}

TEST(X11Displays, AServerThatComesBackIsFoundAgain) {
    const auto displays = makeLinuxPlatform().displays;
    {
        const PrivateXServer server("640x480x24");
        EXPECT_EQ(propertiesAt(*displays, 0).bounds.size.width, 640);
    }
    const PrivateXServer server("320x240x24");
    EXPECT_EQ(propertiesAt(*displays, 0).bounds.size.width, 320);
}

}  // namespace
}  // namespace zorvane
