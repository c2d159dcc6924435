#include "Zorvane/Internal/Discovery/ApplicationDiscovery.hpp"

#include "Zorvane/Internal/Concurrency/Activity.hpp"
#include "Zorvane/Internal/DefaultApplicationIcon.hpp"
#include "tests/Support/LogCapture.hpp"
#include "tests/Support/VirtualWindows.hpp"
#include "tests/Support/VirtualWorld.hpp"

namespace zorvane {
namespace {

using testing::idsOf;
using Availability = ZVRunningApplication::Availability;
using IDs = std::vector<std::int32_t>;

class ApplicationDiscoveryTest : public testing::VirtualWorldTest {
  protected:
    ApplicationDiscoveryTest() { ZVLogger::shared()->setLogLevel("ApplicationDiscovery", ZVLogLevel::trace); }
    ~ApplicationDiscoveryTest() override { ZVLogger::shared()->setLogLevel("ApplicationDiscovery", ZVLogLevel::debug); }

    static IDs listed() { return idsOf(ZVRunningApplication::applications()); }

    const LogCapture log{ZVLogger::shared()};
};

TEST_F(ApplicationDiscoveryTest, ListsApplicationsByNameAndThenByProcess) {
    desktop->now().setApplications(
        {{9, "", "Player 10"}, {8, "", "player 2"}, {7, "", ""}, {6, "", "PLAYER 2"}, {5, "org.a", "Archive"}});
    EXPECT_EQ(listed(), (IDs{7, 5, 6, 8, 9}));
    const auto applications = ZVRunningApplication::applications();
    EXPECT_EQ(applications[0]->name(), std::nullopt);
    EXPECT_EQ(applications[0]->debugDescription(), "ZVRunningApplication[id:7 name:nil]");
    EXPECT_EQ(applications[1]->bundleIdentifier(), "org.a");
    EXPECT_EQ(applications[1]->debugDescription(), "ZVRunningApplication[id:5 name:Archive]");
    EXPECT_TRUE(log.has(ZVLogLevel::info, "Reporting 5 applications."));
    EXPECT_TRUE(log.has(ZVLogLevel::trace, "Update applications", {{"apps", "5"}, {"winAppPIDs", "0"}}));
}

TEST_F(ApplicationDiscoveryTest, AnApplicationThatQuitLeavesTheListAndComesBackAsTheSameObject) {
    desktop->now().setApplications({{5, "", "Archive"}, {6, "", "Board"}});
    const auto archive = ZVRunningApplication::applications().front();
    desktop->now().quitApplication(5);
    Activity::waitUntilIdle();
    EXPECT_EQ(archive->availability(), Availability::notRunning);
    EXPECT_EQ(debugDescription(archive->availability()), "notRunning");
    EXPECT_EQ(listed(), IDs{6});
    desktop->now().startApplication({7, "", "Archive"});
    Activity::waitUntilIdle();
    EXPECT_EQ(archive->availability(), Availability::notRunning) << "another process is another application";
    desktop->now().startApplication({5, "", "Clock"});
    Activity::waitUntilIdle();
    EXPECT_EQ(listed(), (IDs{7, 6, 5}));
    EXPECT_EQ(ZVRunningApplication::applications().back(), archive);
    EXPECT_EQ(archive->name(), "Clock");
}

TEST_F(ApplicationDiscoveryTest, AnotherApplicationUnderTheProcessOfOneThatQuitUnseenIsAnUpdate) {
    desktop->now().setApplications({{5, "org.archive", "Archive"}});
    auto updates = ZVRunningApplication::updates();
    EXPECT_EQ(clock->complete(updates.next()).value().front()->name(), "Archive");
    desktop->now().setApplications({{5, "org.clock", "Clock"}});
    EXPECT_EQ(clock->complete(updates.next()).value().front()->name(), "Clock");
    EXPECT_EQ(log.count(ZVLogLevel::info, "Updating 1 applications"), 2U);
}

TEST_F(ApplicationDiscoveryTest, FollowsAWorkspaceThatTellsOfNoChange) {
    desktop->now().setApplications({{5, "", "Archive"}});
    EXPECT_EQ(listed(), IDs{5});
    desktop->withState([](VirtualDesktopState& state) { state.scene.applications.push_back({6, "", "Board"}); });
    advance(0.1);
    EXPECT_EQ(listed(), (IDs{5, 6}));
}

TEST_F(ApplicationDiscoveryTest, ANewOwnerOfAWindowChangesNoList) {
    desktop->now().setApplications({{5, "", "Archive"}});
    auto updates = ZVRunningApplication::updates();
    EXPECT_EQ(idsOf(clock->complete(updates.next()).value()), IDs{5});
    desktop->now().openWindow(testing::window(1, SCRunningApplication{77, "", "Stranger"}));
    advance(0.1);
    EXPECT_EQ(listed(), IDs{5});
    EXPECT_TRUE(log.has(ZVLogLevel::trace, "Update applications", {{"apps", "1"}, {"winAppPIDs", "1"}}));
    EXPECT_EQ(log.count(ZVLogLevel::trace, "No changes"), 1U);
    advance(1);
    EXPECT_EQ(log.count(ZVLogLevel::trace, "No changes"), 1U) << "nothing happens on an idle desktop";
}

TEST_F(ApplicationDiscoveryTest, AnApplicationWithoutAnIconHasTheDefaultOne) {
    const NSImage dot{1, 1, {1, 2, 3, 255}};
    desktop->now().setApplications({{5, "", "Archive"}, {6, "", "Board"}}).setIcon(5, dot);
    const auto applications = ZVRunningApplication::applications();
    EXPECT_EQ(applications[0]->icon(), dot);
    const NSImage standard = applications[1]->icon();
    EXPECT_EQ(standard, defaultApplicationIcon());
    ASSERT_EQ(standard.pixels.size(), std::size_t{4} * standard.width * standard.height);
    EXPECT_EQ(standard.pixels[3], 0) << "the corner is transparent";
    EXPECT_EQ(standard.pixels[4 * (standard.width * 32 + 32) + 3], 255) << "the middle is not";
}

TEST_F(ApplicationDiscoveryTest, EndsWithItsWorld) {
    listed();
    const std::weak_ptr<ApplicationDiscovery> discovery = ApplicationDiscovery::shared();
    Platform::install(makeVirtualPlatform(VirtualDesktop::make(clock)));
    Activity::waitUntilIdle();
    EXPECT_TRUE(discovery.expired());
    EXPECT_EQ(clock->pendingTimers(), 0U);
    EXPECT_EQ(desktop->sceneHandlers().runningApplicationsChanged->size(), 0U);
}

}  // namespace
}  // namespace zorvane
