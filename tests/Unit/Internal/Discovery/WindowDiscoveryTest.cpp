#include "Zorvane/Internal/Discovery/WindowDiscovery.hpp"

#include "Zorvane/Internal/Concurrency/Activity.hpp"
#include "tests/Support/LogCapture.hpp"
#include "tests/Support/VirtualWindows.hpp"
#include "tests/Support/VirtualWorld.hpp"

namespace zorvane {
namespace {

using testing::idsOf;
using testing::someApplication;
using testing::window;
using Availability = ZVWindow::Availability;
using IDs = std::vector<std::uint32_t>;

constexpr double pollInterval = 0.1;

const SCRunningApplication otherApplication{31, "org.other", "Other"};

/// A desktop with the windows 1 and 2, the first one in front.
class WindowDiscoveryTest : public testing::VirtualWorldTest {
  protected:
    WindowDiscoveryTest() {
        ZVLogger::shared()->setLogLevel("WindowDiscovery", ZVLogLevel::trace);
        desktop->now().setWindows({window(1), window(2, otherApplication)});
    }
    ~WindowDiscoveryTest() override { ZVLogger::shared()->setLogLevel("WindowDiscovery", ZVLogLevel::debug); }

    static IDs listed(ZVWindow::FilterOptions options = ZVWindow::FilterOptions::onlyOnScreen) {
        return idsOf(ZVWindow::windows(options));
    }
    static std::shared_ptr<ZVWindow> find(std::uint32_t id) {
        for (const auto& window : WindowDiscovery::shared()->windows()) {
            if (window->id() == id) {
                return window;
            }
        }
        return nullptr;
    }

    const LogCapture log{ZVLogger::shared()};
};

TEST_F(WindowDiscoveryTest, AWindowThatChangesIsTheSameObjectWithOtherProperties) {
    const auto first = find(1);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(first->applicationProcessID(), 30);
    EXPECT_EQ(first->applicationName(), "Some");
    EXPECT_EQ(first->level(), ZVWindow::Level::normal);
    std::vector<std::string> titles;
    bool isOnMain = true;
    ZVSubscription subscription = first->titlePublisher().subscribe([&](const std::optional<std::string>& title) {
        isOnMain = isOnMain && ZVMainExecutor::isCurrent();
        titles.push_back(title.value_or("none"));
    });
    desktop->now().retitleWindow(1, "Draft").moveWindow(1, CGRect::make(5, 6, 70, 80));
    advance(pollInterval);
    EXPECT_EQ(titles, (std::vector<std::string>{"Window 1", "Draft"}));
    EXPECT_TRUE(isOnMain);
    EXPECT_EQ(first->frame(), CGRect::make(5, 6, 70, 80));
    EXPECT_EQ(find(1), first);
    subscription.cancel();
    desktop->now().retitleWindow(1, std::nullopt);
    advance(pollInterval);
    EXPECT_EQ(first->title(), std::nullopt);
    EXPECT_EQ(titles.size(), 2U) << "a subscription that is over hears nothing";
}

TEST_F(WindowDiscoveryTest, AWindowThatIsNotListedAnyMoreIsClosedUntilItComesBack) {
    const auto second = find(2);
    EXPECT_EQ(second->availability(), Availability::available);
    desktop->now().closeWindow(2);
    advance(pollInterval);
    EXPECT_EQ(second->availability(), Availability::closed);
    EXPECT_EQ(listed(), IDs{1});
    desktop->now().openWindow(window(2));
    advance(pollInterval);
    EXPECT_EQ(second->availability(), Availability::available);
    EXPECT_EQ(find(2), second);
    EXPECT_EQ(listed(), (IDs{2, 1}));
}

TEST_F(WindowDiscoveryTest, AMinimisedWindowIsNotOnScreenUntilItIsRestoredOrClosed) {
    const auto second = find(2);
    desktop->now().minimizeWindow(2);
    advance(pollInterval);
    EXPECT_EQ(second->availability(), Availability::notOnScreen);
    EXPECT_EQ(listed(), IDs{1});
    EXPECT_EQ(find(2), second);
    desktop->now().restoreWindow(2);
    advance(pollInterval);
    EXPECT_EQ(second->availability(), Availability::available);
    desktop->now().minimizeWindow(2).closeWindow(2);
    advance(pollInterval);
    EXPECT_EQ(second->availability(), Availability::closed);
}

TEST_F(WindowDiscoveryTest, AWindowThatIsListedTwiceCountsOnceAndOneWithoutAnOwnerHasNone) {
    const auto first = find(1);
    CGInterop::Window seen;
    seen.windowID = 1;
    ZVMainExecutor::post([seen] { WindowDiscovery::shared()->updateWindows({seen, seen}); });
    Activity::waitUntilIdle();
    EXPECT_EQ(first->applicationProcessID(), std::nullopt);
    EXPECT_EQ(first->applicationName(), std::nullopt);
    EXPECT_EQ(idsOf(WindowDiscovery::shared()->windows()), IDs{1});
}

TEST_F(WindowDiscoveryTest, TheOrderFollowsAChangeOfTheFrontmostApplicationWithoutWaitingForThePoll) {
    EXPECT_EQ(listed(), (IDs{1, 2}));
    Activity::waitUntilIdle();
    desktop->now().activateApplication(otherApplication.processID);
    Activity::waitUntilIdle();
    EXPECT_EQ(listed(), (IDs{2, 1}));
    desktop->now().openWindow(window(3, otherApplication));
    Activity::waitUntilIdle();
    EXPECT_EQ(listed(), (IDs{2, 1})) << "the same application stays in front";
    advance(pollInterval);
    EXPECT_EQ(listed(), (IDs{3, 2, 1}));
}

TEST_F(WindowDiscoveryTest, AnIdleDesktopIsAskedAndNothingMoreHappens) {
    listed();
    advance(1);
    EXPECT_EQ(log.count(ZVLogLevel::trace, "Update windows"), 1U);
    desktop->now().retitleWindow(1, "Draft");
    advance(1);
    EXPECT_EQ(log.count(ZVLogLevel::trace, "Update windows"), 2U);
    EXPECT_EQ(log.count(ZVLogLevel::info, "Updating 2 windows"), 2U);
}

TEST_F(WindowDiscoveryTest, AFailingQueryLeavesTheListAndThePollGoesOn) {
    listed();
    desktop->now()
        .failWindowList(std::make_exception_ptr(CGErrorDescription(CGError::failure, "No answer.")))
        .closeWindow(1);
    advance(1);
    EXPECT_EQ(listed(), (IDs{1, 2}));
    EXPECT_EQ(log.count(ZVLogLevel::error, "Failed to get windows: failure"), 1U);
    desktop->now().failWindowList(nullptr);
    advance(pollInterval);
    EXPECT_EQ(listed(), IDs{2});
}

TEST_F(WindowDiscoveryTest, AWindowIsVisibleWhereAnAvailableDisplayIs) {
    desktop->now().putDisplay({.displayID = 2, .serialNumber = 88, .frame = CGRect::make(320, 0, 100, 100)});
    const auto first = find(1);
    struct Row {
        CGRect frame;
        bool isInside;
    };
    const Row rows[] = {
        {CGRect::make(400, 90, 50, 50), true},  {CGRect::make(420, 0, 50, 50), false},  // shares an edge
        {CGRect::make(-50, -50, 51, 51), true}, {CGRect::make(330, 120, 50, 50), false},
        {CGRect::make(330, 50, 0, 0), false},   {CGRect::make(330, 50, 20, 20), true},
    };
    for (const Row& row : rows) {
        desktop->now().moveWindow(1, row.frame);
        advance(pollInterval);
        EXPECT_EQ(first->insideVisibleFrame(), row.isInside) << debugDescription(row.frame);
    }
    desktop->now().removeDisplay(2);
    advance(pollInterval);
    EXPECT_FALSE(first->insideVisibleFrame()) << "its display is gone";
}

TEST_F(WindowDiscoveryTest, UpdatesGiveEachFilteredListAsItIsPublished) {
    desktop->now().openWindow(window(3, someApplication, CGRect::make(0, 0, 320, 20), 24));
    auto updates = ZVWindow::updates();
    EXPECT_EQ(idsOf(clock->complete(updates.next()).value()), (IDs{1, 2}));
    desktop->now().raiseWindow(2);
    EXPECT_EQ(idsOf(clock->complete(updates.next()).value()), (IDs{2, 1}));
    desktop->now().retitleWindow(1, "StatusIndicator");
    EXPECT_EQ(idsOf(clock->complete(updates.next()).value()), (IDs{2, 1})) << "a list follows each change of a window";
}

TEST_F(WindowDiscoveryTest, EndsWithItsWorldAndLeavesNoTimer) {
    listed();
    advance(pollInterval);
    const std::weak_ptr<WindowDiscovery> discovery = WindowDiscovery::shared();
    EXPECT_EQ(clock->pendingTimers(), 1U);
    Platform::install(makeVirtualPlatform(VirtualDesktop::make(clock)));
    Activity::waitUntilIdle();
    EXPECT_TRUE(discovery.expired());
    EXPECT_EQ(clock->pendingTimers(), 0U);
    EXPECT_EQ(desktop->sceneHandlers().frontmostApplicationChanged->size(), 0U);
}

}  // namespace
}  // namespace zorvane
