#include "Zorvane/Sources/ZVDisplay.hpp"

#include <gtest/gtest.h>

#include "Zorvane/Internal/CGInterop/Display.hpp"
#include "Zorvane/ZVPlatform.hpp"
#include "tests/Support/LogCapture.hpp"

namespace zorvane {
namespace {

TEST(ZVDisplay, TellsOfTheDisplaysOfTheChosenPlatform) {
    const LogCapture log(ZVLogger::shared());
    ZVPlatform::use(ZVPlatformKind::virtualDesktop);
    const auto displays = ZVDisplay::displays();
    ASSERT_EQ(displays.size(), 1U);
    const ZVDisplay& display = *displays.front();
    EXPECT_EQ(display.localizedName(), "Virtual Display");
    EXPECT_TRUE(display.isMain());
    EXPECT_EQ(display.frame(), CGRect::make(0, 0, 1920, 1080));
    EXPECT_EQ(display.id(), CGInterop::Display::getActiveDisplays().front().serialNumber);
    EXPECT_EQ(display.availability(), ZVDisplay::Availability::available);
    EXPECT_EQ(display.debugDescription(), "ZVDisplay[id:" + std::to_string(display.id()) +
                                              " name:Virtual Display isMain:true frame:(0, 0, 1920, 1080)]");
    EXPECT_EQ(ZVDisplay::displays(), displays) << "the same objects again";
    EXPECT_EQ(ZVDisplay::preferred(), displays.front());
    EXPECT_TRUE(log.has(ZVLogLevel::info, "Reporting 1 displays."));
    ZVPlatform::use(ZVPlatformKind::linuxDesktop);
}

TEST(ZVDisplay, SaysWhatItsAvailabilityMeansAndWhatHelps) {
    using Availability = ZVDisplay::Availability;
    EXPECT_EQ(debugDescription(Availability::available), "available");
    EXPECT_EQ(status(Availability::available), "Available");
    EXPECT_EQ(recoverySuggestion(Availability::available), "");
    EXPECT_EQ(debugDescription(Availability::lidClosed), "lidClosed");
    EXPECT_EQ(status(Availability::lidClosed), "MacBook lid closed");
    EXPECT_EQ(recoverySuggestion(Availability::lidClosed), "Open MacBook lid");
    EXPECT_EQ(debugDescription(Availability::notConnected), "notConnected");
    EXPECT_EQ(status(Availability::notConnected), "Not connected");
    EXPECT_EQ(recoverySuggestion(Availability::notConnected), "Connect display");
}

}  // namespace
}  // namespace zorvane
