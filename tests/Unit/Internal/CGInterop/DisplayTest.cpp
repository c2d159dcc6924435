#include "Zorvane/Internal/CGInterop/Display.hpp"

#include "tests/Support/VirtualWorld.hpp"

namespace zorvane {
namespace {

using CGInterop::Display;

class CGInteropDisplayTest : public testing::VirtualWorldTest {
  protected:
    static std::string nameOf(CGDirectDisplayID displayID) { return Display::forID(displayID).value().displayName(); }
};

TEST_F(CGInteropDisplayTest, ANamelessPanelIsNamedAfterItsVendorElseItsNumber) {
    struct Row {
        std::uint32_t vendor, model, unit;
        std::string name;
    };
    const Row rows[] = {
        {0x6161706C, 0, 1337, "iPad Sidecar"}, {0x6161706C, 0, 0, "AirPlay Display"},
        {0x6161706C, 0, 1, "Display #5"},      {0x0610, 0xA04E, 0, "Built-in Retina Display"},
        {0x0610, 1, 0, "Apple Display"},       {0x1E6D, 0x5B11, 0, "LG UltraFine"},
        {0x1E6D, 1, 0, "LG Display"},          {0x10AC, 0, 0, "Dell Display"},
        {0x26CD, 0, 0, "iiyama Display"},      {0x3064, 0, 0, "Eiki Display"},
        {0x410C, 0, 0, "Philips Display"},     {0x4C2D, 0, 0, "Samsung Display"},
        {0x1234, 0, 0, "Display #5"},
    };
    for (const Row& row : rows) {
        desktop->now().putDisplay({.displayID = 5,
                                   .name = std::nullopt,
                                   .vendorNumber = row.vendor,
                                   .modelNumber = row.model,
                                   .unitNumber = row.unit});
        EXPECT_EQ(nameOf(5), row.name) << std::hex << row.vendor << " " << row.model << " " << std::dec << row.unit;
    }
    desktop->now().putDisplay({.displayID = 5, .name = "Desk", .vendorNumber = 0x6161706C, .unitNumber = 1337});
    EXPECT_EQ(nameOf(5), "Desk") << "the panel's own name wins";
    Display display;
    display.nameForTesting = "Sidecar Display (AirPlay)";
    EXPECT_EQ(display.displayName(), "Sidecar Display (AirPlay)");
}

TEST_F(CGInteropDisplayTest, AMirrorSaysWhatItMirrorsOnceAround) {
    desktop->now()
        .putDisplay({.displayID = 5, .name = "Left", .mirrors = 6})
        .putDisplay({.displayID = 6, .name = "Right", .mirrors = 5})
        .putDisplay({.displayID = 7, .name = "Self", .mirrors = 7})
        .putDisplay({.displayID = 8, .name = "Lost", .mirrors = 99});
    EXPECT_EQ(nameOf(5), "Left (mirror of Right)");
    EXPECT_EQ(nameOf(6), "Right (mirror of Left)");
    EXPECT_EQ(nameOf(7), "Self");
    EXPECT_EQ(nameOf(8), "Lost (mirror of Display #99)");
}

TEST_F(CGInteropDisplayTest, ThePointBetweenTwoDisplaysBelongsToTheSecond) {
    desktop->now().putDisplay({.displayID = 2, .frame = CGRect::make(320, 0, 100, 100)});
    using IDs = std::vector<CGDirectDisplayID>;
    EXPECT_EQ(Display::getActiveDisplays(CGPoint{0, 0}), IDs{1});
    EXPECT_EQ(Display::getActiveDisplays(CGPoint{320, 99.5}), IDs{2});
    EXPECT_EQ(Display::getActiveDisplays(CGPoint{320, 100}), IDs{});
    desktop->now().failDisplayList(CGError::cannotComplete);
    EXPECT_THROW(Display::getActiveDisplays(CGPoint{0, 0}), CGErrorDescription);
}

TEST_F(CGInteropDisplayTest, ReconfigurationsAreToldUntilTheirStreamIsDropped) {
    {
        auto reconfigurations = Display::allReconfigurations();
        desktop->now().putDisplay({.displayID = 2}).removeDisplay(2);
        const auto added = clock->complete(reconfigurations.next()).value();
        EXPECT_EQ(added.displayID, 2U);
        EXPECT_EQ(added.changeSummary, CGDisplayChangeSummaryFlags::add);
        const auto removed = clock->complete(reconfigurations.next()).value();
        EXPECT_EQ(removed.changeSummary, CGDisplayChangeSummaryFlags::remove);
    }
    EXPECT_EQ(desktop->sceneHandlers().displayReconfigured->size(), 0U);
    desktop->now().putDisplay({.displayID = 3});
}

}  // namespace
}  // namespace zorvane
