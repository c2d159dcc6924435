#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <memory>
#include <set>

#include "Zorvane/Platform/CoreGraphics/CGDisplays.hpp"
#include "Zorvane/Platform/CoreGraphics/CGError.hpp"
#include "Zorvane/Platform/Linux/LinuxPlatform.hpp"
#include "tests/Support/EDIDBuilder.hpp"
#include "tests/Support/PrivateXServer.hpp"
#include "tests/Support/WaitUntil.hpp"
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
    const PrivateXServer environment;  // which is as it was at the end
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

TEST(X11Displays, SixtyFourMonitorsAreToldApart) {
    const PrivateXServer server("3200x64x24");
    X11TestClient client;
    for (std::int16_t index = 0; index < 64; ++index) {
        client.setMonitor("part " + std::to_string(index), {static_cast<std::int16_t>(50 * index), 0, 50, 64}, false,
                          index == 0);
    }
    const auto displays = makeLinuxPlatform().displays;
    const auto list = displays->activeDisplayList();
    EXPECT_EQ(list.size(), 64U);
    EXPECT_EQ(std::set(list.begin(), list.end()).size(), 64U);
    for (std::size_t index = 0; index < list.size(); ++index) {
        EXPECT_EQ(displays->properties(list[index])->bounds.size.width, 50);
    }
    EXPECT_EQ(displays->activeDisplayList(), list);
}

/// Counts calls. The counter may be told to end the registration in the next one.
struct Reconfigurations {
    static void count(CGDirectDisplayID, CGDisplayChangeSummaryFlags, void* userInfo) {
        auto& self = *static_cast<Reconfigurations*>(userInfo);
        if (self.endsItself) {
            self.displays->removeReconfigurationCallback(count, userInfo);
        }
        ++self.calls;
    }

    std::shared_ptr<CGDisplays> displays = makeLinuxPlatform().displays;
    std::atomic<bool> endsItself = false;
    std::atomic<int> calls = 0;
};

TEST(X11Displays, ReconfigurationsAreTold) {
    PrivateXServer server("640x480x24");
    X11TestClient client;
    Reconfigurations told;
    told.displays->registerReconfigurationCallback(Reconfigurations::count, &told);
    waitUntil([&] { return told.calls > 0; });  // what was before the connection, nobody knows
    const auto isToldAfter = [&](auto change) {
        const int before = told.calls;
        change();
        waitUntil([&] { return told.calls > before; });
    };
    isToldAfter([&] { client.setMonitor("part", {0, 0, 100, 100}, false, false); });
    EXPECT_EQ(told.displays->activeDisplayList().size(), 2U);
    isToldAfter([&] { client.removeMonitor("part"); });
    isToldAfter([&] { client.resizeScreen(320, 240, 75); });
    EXPECT_EQ(told.displays->displayMode(told.displays->activeDisplayList().at(0))->refreshRate, 75);
    isToldAfter([&] { server.kill(); });
    isToldAfter([&] { server.restart(); });
    EXPECT_EQ(propertiesAt(*told.displays, 0).bounds.size.width, 640);

    told.displays->removeReconfigurationCallback(Reconfigurations::count, &told);
    const int atTheEnd = told.calls;
    X11TestClient().setMonitor("part", {0, 0, 100, 100}, false, false);
    EXPECT_EQ(told.calls, atTheEnd);
}

TEST(X11Displays, AReconfigurationCallbackMayEndItself) {
    const PrivateXServer server;
    Reconfigurations told;
    told.endsItself = true;
    told.displays->registerReconfigurationCallback(Reconfigurations::count, &told);
    waitUntil([&] { return told.calls > 0; });
    X11TestClient().setMonitor("part", {0, 0, 100, 100}, false, false);
    told.displays->removeReconfigurationCallback(Reconfigurations::count, &told);
    EXPECT_EQ(told.calls, 1);
}

}  // namespace
}  // namespace zorvane
