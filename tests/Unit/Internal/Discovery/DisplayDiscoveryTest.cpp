#include "Zorvane/Internal/Discovery/DisplayDiscovery.hpp"

#include <atomic>

#include "Zorvane/Internal/Concurrency/Activity.hpp"
#include "Zorvane/Internal/Concurrency/Executor.hpp"
#include "Zorvane/Internal/ZVUserPreferred.hpp"
#include "tests/Support/LogCapture.hpp"
#include "tests/Support/VirtualWindows.hpp"
#include "tests/Support/VirtualWorld.hpp"

namespace zorvane {
namespace {

using testing::idsOf;
using Availability = ZVDisplay::Availability;
using IDs = std::vector<std::uint32_t>;

constexpr VirtualDisplay panel(CGDirectDisplayID displayID, std::uint32_t serialNumber) {
    return {.displayID = displayID,
            .serialNumber = serialNumber,
            .name = std::nullopt,
            .frame = CGRect::make(320, 0, 64, 64)};
}

/// A desktop with display 77 under the number 1.
class DisplayDiscoveryTest : public testing::VirtualWorldTest {
  protected:
    static std::shared_ptr<ZVDisplay> display(std::uint32_t id) {
        for (const auto& display : ZVDisplay::displays()) {
            if (display->id() == id) {
                return display;
            }
        }
        return nullptr;
    }

    const LogCapture log{ZVLogger::shared()};
};

TEST_F(DisplayDiscoveryTest, ADisplayThatIsUnpluggedAndComesBackIsTheSameObjectUnderANewNumber) {
    desktop->now().putDisplay(panel(2, 88));
    const auto external = display(88);
    ASSERT_NE(external, nullptr);
    EXPECT_EQ(external->availability(), Availability::available);
    desktop->now().removeDisplay(2);
    Activity::waitUntilIdle();
    EXPECT_EQ(external->availability(), Availability::notConnected);
    EXPECT_EQ(idsOf(ZVDisplay::displays()), (IDs{77, 88})) << "it stays in the list";
    desktop->now().putDisplay(panel(9, 88));
    Activity::waitUntilIdle();
    EXPECT_EQ(external->availability(), Availability::available);
    EXPECT_EQ(external->displayID(), 9U);
    EXPECT_EQ(display(88), external);
    EXPECT_TRUE(log.has(ZVLogLevel::debug, "Starting with inital displays"));
    EXPECT_EQ(log.count(ZVLogLevel::info, "Updating 2 displays"), 1U) << "the list never changed";
}

TEST_F(DisplayDiscoveryTest, OnlyABuiltInDisplayOfALaptopIsBehindItsLid) {
    struct Row {
        std::optional<std::string> model;
        bool hasLid;
        Availability availability;
    };
    const Row rows[] = {
        {"MacBookPro18,1", false, Availability::lidClosed},
        {"Thinkable 7", true, Availability::lidClosed},
        {"iMac20,1", false, Availability::notConnected},
        {std::nullopt, false, Availability::notConnected},
    };
    desktop->now().putDisplay({.displayID = 2, .serialNumber = 88, .isBuiltIn = true});
    const auto builtIn = display(88);
    for (const Row& row : rows) {
        desktop->now().setMachine({.model = row.model, .hasLid = row.hasLid}).closeLid();
        Activity::waitUntilIdle();
        EXPECT_EQ(builtIn->availability(), row.availability) << row.model.value_or("no model");
        EXPECT_EQ(display(77)->availability(), Availability::available) << "the external one stays";
        desktop->now().openLid();
        Activity::waitUntilIdle();
        EXPECT_EQ(builtIn->availability(), Availability::available);
    }
    desktop->now().setMachine({.hasLid = true}).removeDisplay(1);
    Activity::waitUntilIdle();
    EXPECT_EQ(display(77)->availability(), Availability::notConnected) << "an external one has no lid";
}

TEST_F(DisplayDiscoveryTest, ADisplayThatChangesTellsTheSubscribersOfWhatChanged) {
    const auto main = display(77);
    std::vector<std::string> names;
    int frames = 0;
    bool isOnMain = true;
    ZVSubscription nameSubscription = main->localizedNamePublisher().subscribe([&](const std::string& name) {
        isOnMain = isOnMain && ZVMainExecutor::isCurrent();
        names.push_back(name);
    });
    ZVSubscription frameSubscription = main->framePublisher().subscribe([&](const CGRect&) { ++frames; });
    desktop->now().putDisplay({.displayID = 1, .serialNumber = 77, .name = "Desk", .frame = main->frame()});
    Activity::waitUntilIdle();
    EXPECT_EQ(names, (std::vector<std::string>{"Virtual Display", "Desk"}));
    EXPECT_TRUE(isOnMain);
    EXPECT_EQ(frames, 1) << "only the present one";
}

TEST_F(DisplayDiscoveryTest, AnotherDisplayBecomesTheMainOne) {
    desktop->now().putDisplay(panel(2, 88));
    ASSERT_TRUE(display(77)->isMain());
    desktop->now().removeDisplay(1);
    Activity::waitUntilIdle();
    EXPECT_TRUE(display(88)->isMain());
    EXPECT_EQ(ZVDisplay::preferred(), display(88));
}

TEST_F(DisplayDiscoveryTest, TheDisplayRecordedLastThatIsAvailableIsThePreferredOne) {
    EXPECT_EQ(ZVDisplay::preferred(), display(77)) << "the main one, as long as none was recorded";
    ZVUserPreferred::shared()->updateDisplay(88);
    ZVUserPreferred::shared()->updateDisplay(99);
    desktop->now().putDisplay(panel(2, 88)).putDisplay(panel(3, 99));
    Activity::waitUntilIdle();
    EXPECT_EQ(ZVDisplay::preferred(), display(99));
    desktop->now().removeDisplay(3);
    Activity::waitUntilIdle();
    EXPECT_EQ(ZVDisplay::preferred(), display(88));
    desktop->now().removeDisplay(2).removeDisplay(1);
    Activity::waitUntilIdle();
    EXPECT_EQ(ZVDisplay::preferred(), nullptr);
}

TEST_F(DisplayDiscoveryTest, AListThatCannotBeReadLeavesTheLastOneStanding) {
    const auto main = display(77);
    EXPECT_EQ(ZVDisplay::discoveryFailure(), nullptr);
    desktop->now().failDisplayList(CGError::cannotComplete).putDisplay(panel(2, 88)).removeDisplay(1);
    Activity::waitUntilIdle();
    EXPECT_EQ(idsOf(ZVDisplay::displays()), IDs{77});
    EXPECT_EQ(main->availability(), Availability::available);
    EXPECT_TRUE(log.has(ZVLogLevel::error, "Failed to get active displays: cannotComplete"));
    EXPECT_EQ(debugDescription(ZVDisplay::discoveryFailure()), "cannotComplete");

    desktop->now().failDisplayList(CGError::success);
    DisplayDiscovery::shared()->triggerUpdate();
    Activity::waitUntilIdle();
    EXPECT_EQ(idsOf(ZVDisplay::displays()), (IDs{77, 88}));
    EXPECT_EQ(ZVDisplay::discoveryFailure(), nullptr);
    EXPECT_TRUE(log.has(ZVLogLevel::debug, "Trigger update"));
}

TEST_F(DisplayDiscoveryTest, AListThatCannotBeReadAtFirstIsEmpty) {
    desktop->now().failDisplayList(CGError::failure);
    EXPECT_TRUE(ZVDisplay::displays().empty());
    EXPECT_EQ(ZVDisplay::preferred(), nullptr);
    EXPECT_EQ(debugDescription(ZVDisplay::discoveryFailure()), "failure");
}

TEST_F(DisplayDiscoveryTest, OfTwoDisplaysWithOneSerialNumberTheFirstCounts) {
    desktop->now().putDisplay(panel(2, 77));
    const auto displays = ZVDisplay::displays();
    ASSERT_EQ(idsOf(displays), IDs{77});
    EXPECT_EQ(displays.front()->displayID(), 1U);
}

TEST_F(DisplayDiscoveryTest, ListsManyDisplaysInTheOrderOfTheirNumbers) {
    IDs expected{77};
    for (std::uint32_t index = 0; index < 63; ++index) {
        desktop->now().putDisplay(panel(100 - index, 1000 + index));
        expected.insert(expected.begin() + 1, 1000 + index);
    }
    EXPECT_EQ(idsOf(ZVDisplay::displays()), expected);
}

TEST_F(DisplayDiscoveryTest, UpdatesBeginWithTheListOfNowAndGoOnWithEachChange) {
    auto updates = ZVDisplay::updates();
    EXPECT_EQ(idsOf(clock->complete(updates.next()).value()), IDs{77});
    desktop->now().putDisplay(panel(2, 88));
    EXPECT_EQ(idsOf(clock->complete(updates.next()).value()), (IDs{77, 88}));
    desktop->now().putDisplay(panel(3, 99));
    EXPECT_EQ(idsOf(clock->complete(updates.next()).value()), (IDs{77, 88, 99}));
}

ZVTask<> countLists(ZVAsyncStream<ZVDisplay::List> updates, int& count) {
    while (const auto list = co_await updates.next()) {
        ++count;
    }
}

TEST_F(DisplayDiscoveryTest, EachUpdateThatChangesADisplayPublishesTheListOnce) {
    desktop->now().putDisplay(panel(2, 88));
    const auto external = display(88);
    int lists = 0;
    TaskHandle<> counter = spawn(countLists(ZVDisplay::updates(), lists));
    Activity::waitUntilIdle();
    EXPECT_EQ(lists, 1) << "the one of now";
    desktop->now().putDisplay(
        {.displayID = 2, .serialNumber = 88, .name = "Desk", .frame = CGRect::make(0, 200, 9, 9)});
    Activity::waitUntilIdle();
    EXPECT_EQ(lists, 2) << "another name and frame, in one update";
    desktop->now().removeDisplay(2);
    Activity::waitUntilIdle();
    EXPECT_EQ(external->availability(), Availability::notConnected);
    EXPECT_EQ(lists, 3);
    DisplayDiscovery::shared()->triggerUpdate();
    Activity::waitUntilIdle();
    EXPECT_EQ(lists, 3) << "nothing has changed";
    counter.cancel();
}

/// Notes whether anybody asks on the main executor.
class WatchedDisplays final : public CGDisplays {
  public:
    explicit WatchedDisplays(std::shared_ptr<CGDisplays> displays) : displays_(std::move(displays)) {}

    std::vector<CGDirectDisplayID> activeDisplayList() override { return noted().activeDisplayList(); }
    std::optional<CGDisplayProperties> properties(CGDirectDisplayID id) override { return noted().properties(id); }
    std::optional<CGDisplayMode> displayMode(CGDirectDisplayID id) override { return noted().displayMode(id); }
    void registerReconfigurationCallback(CGDisplayReconfigurationCallBack callback, void* userInfo) override {
        displays_->registerReconfigurationCallback(callback, userInfo);
    }
    void removeReconfigurationCallback(CGDisplayReconfigurationCallBack callback, void* userInfo) override {
        displays_->removeReconfigurationCallback(callback, userInfo);
    }

    std::atomic<int> questions = 0;
    std::atomic<bool> askedOnMain = false;

  private:
    CGDisplays& noted() {
        ++questions;
        askedOnMain = askedOnMain || ZVMainExecutor::isCurrent();
        return *displays_;
    }

    const std::shared_ptr<CGDisplays> displays_;
};

TEST_F(DisplayDiscoveryTest, ASlowWindowServerNeverHoldsUpTheMainExecutor) {
    Platform platform = makeVirtualPlatform(desktop);
    const auto watched = std::make_shared<WatchedDisplays>(platform.displays);
    platform.displays = watched;
    Platform::install(std::move(platform));
    const auto main = display(77);
    const int questionsAtFirst = watched->questions;
    desktop->now().putDisplay({.displayID = 2, .serialNumber = 88, .name = "Copy", .mirrors = 1});
    Activity::waitUntilIdle();
    EXPECT_EQ(display(88)->localizedName(), "Copy (mirror of Virtual Display)");
    EXPECT_GT(watched->questions, questionsAtFirst);
    EXPECT_FALSE(watched->askedOnMain);
}

TEST_F(DisplayDiscoveryTest, EndsWithItsWorld) {
    const auto main = display(77);
    const std::weak_ptr<DisplayDiscovery> discovery = DisplayDiscovery::shared();
    auto updates = ZVDisplay::updates();
    EXPECT_EQ(clock->complete(updates.next()).value().size(), 1U);
    EXPECT_EQ(desktop->sceneHandlers().displayReconfigured->size(), 1U);
    Platform::install(makeVirtualPlatform(VirtualDesktop::make(clock)));
    Activity::waitUntilIdle();
    EXPECT_TRUE(discovery.expired());
    EXPECT_EQ(desktop->sceneHandlers().displayReconfigured->size(), 0U);
    EXPECT_EQ(main->localizedName(), "Virtual Display") << "an object that is held lives on";
    EXPECT_NE(ZVDisplay::displays().front(), main);
}

}  // namespace
}  // namespace zorvane
