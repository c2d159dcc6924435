#include "Zorvane/Internal/TopWindowTracker.hpp"

#include <atomic>
#include <optional>
#include <vector>

#include "Zorvane/Internal/Concurrency/Activity.hpp"
#include "Zorvane/Platform/Virtual/VirtualWindowList.hpp"
#include "tests/Support/VirtualWindows.hpp"
#include "tests/Support/VirtualWorld.hpp"

namespace zorvane {
namespace {

using testing::window;
using Update = TopWindowTracker::Update;

constexpr double pollInterval = 0.1;
constexpr double quantum = 0.001;  // how long a yield takes in simulated time
const CGRect onFirstDisplay = CGRect::make(10, 10, 100, 80);
const CGRect mostlyOnSecondDisplay = CGRect::make(290, 10, 100, 80);

/// Counts how often the window server is asked where a window is.
class CountingWindowList final : public CGWindowList {
  public:
    explicit CountingWindowList(const std::shared_ptr<VirtualDesktop>& desktop) : list_(desktop) {}

    std::vector<CGWindowDescription> copyWindowInfo(CGWindowListOption option, CGWindowID window) override {
        return list_.copyWindowInfo(option, window);
    }
    std::optional<std::vector<CGWindowID>> create(CGWindowListOption option, CGWindowID window) override {
        return list_.create(option, window);
    }
    std::vector<CGWindowDescription> createDescriptionFromArray(const std::vector<CGWindowID>& ids) override {
        ++questions;
        return list_.createDescriptionFromArray(ids);
    }
    NSKeyValueObservation observe(std::function<void()> handler) override { return list_.observe(std::move(handler)); }

    std::atomic<int> questions = 0;

  private:
    VirtualWindowList list_;
};

/// Two displays side by side, 320 points wide, and on the first one two windows, of which window 1 is in front.
class TopWindowTrackerTest : public testing::VirtualWorldTest {
  protected:
    TopWindowTrackerTest() {
        Platform platform = makeVirtualPlatform(desktop, writing);
        platform.windowList = windowList;
        Platform::install(std::move(platform));
        desktop->now()
            .putDisplay({.displayID = 2, .serialNumber = 88, .frame = CGRect::make(320, 0, 320, 200)})
            .setWindows({window(1, testing::someApplication, onFirstDisplay),
                         window(2, testing::someApplication, onFirstDisplay)});
    }
    ~TopWindowTrackerTest() override {
        updates.reset();
        tracker = nullptr;
        Activity::waitUntilIdle();
    }

    void track(std::optional<CGDirectDisplayID> displayID) {
        tracker = TopWindowTracker::make(displayID, ZVWindow::FilterOptions::default_);
        updates.emplace(tracker->updates());
        rest();
    }
    /// What the stream holds now, if it has something new.
    std::optional<Update> next() {
        std::optional<Update> taken;
        const auto taking = spawn(take(*updates, taken));
        Activity::waitUntilIdle();
        taking.cancel();
        rest();
        return taken;
    }
    /// The id of the window that the stream tells of: 0 for none, nothing without an update.
    std::optional<std::uint32_t> nextWindow() {
        const auto update = next();
        if (!update) {
            return std::nullopt;
        }
        return update->windowSnapshot ? update->windowSnapshot->windowID : 0;
    }

    /// Until the tracker waits for the next change.
    void rest() { advance(0.005); }

    static Task<> take(AsyncStream<Update>& updates, std::optional<Update>& taken) { taken = co_await updates.next(); }

    const std::shared_ptr<CountingWindowList> windowList = std::make_shared<CountingWindowList>(desktop);
    std::shared_ptr<TopWindowTracker> tracker;
    std::optional<AsyncStream<Update>> updates;
};

TEST_F(TopWindowTrackerTest, TheFirstUpdateTellsOfTheFrontWindow) {
    track(1);
    const TopWindowTracker::WindowSnapshot expected{.windowID = 1,
                                                    .windowTitle = "Window 1",
                                                    .applicationID = 30,
                                                    .applicationName = "Some",
                                                    .level = ZVWindow::Level::normal,
                                                    .topLeftFrame = onFirstDisplay};
    EXPECT_EQ(next(), (Update{.timestamp = hostSeconds(0), .windowSnapshot = expected}));
}

TEST_F(TopWindowTrackerTest, WithoutAWindowThereIsOneUpdateUntilOneShowsUp) {
    desktop->now().minimizeWindow(1).minimizeWindow(2).openWindow(
        window(3, testing::someApplication, onFirstDisplay, /*layer=*/101));
    track(1);
    EXPECT_EQ(nextWindow(), 0U);
    advance(1);
    desktop->now().moveWindow(3, mostlyOnSecondDisplay);
    advance(1);
    EXPECT_EQ(nextWindow(), std::nullopt);
    desktop->now().openWindow(window(4));
    advance(pollInterval);
    EXPECT_EQ(nextWindow(), 4U);
}

TEST_F(TopWindowTrackerTest, EveryStepOfADragIsToldOfAtItsTime) {
    track(1);
    next();
    for (int step = 1; step <= 20; ++step) {
        advance(0.008);
        const CGRect frame = CGRect::make(10 + step, 10, 100, 80);
        const double time = hostSeconds(secondsNow());
        desktop->now().moveWindow(1, frame);
        advance(quantum);
        const auto update = next();
        ASSERT_TRUE(update && update->windowSnapshot) << step;
        EXPECT_EQ(update->windowSnapshot->topLeftFrame, frame);
        EXPECT_NEAR(update->timestamp, time, quantum);
    }
}

TEST_F(TopWindowTrackerTest, AChangedTitleAloneIsToldOf) {
    track(1);
    next();
    desktop->now().retitleWindow(1, std::nullopt);
    advance(pollInterval);
    const auto update = next();
    ASSERT_TRUE(update && update->windowSnapshot);
    EXPECT_EQ(update->windowSnapshot->windowTitle, std::nullopt);
    desktop->now().retitleWindow(2, "of a window behind").moveWindow(2, mostlyOnSecondDisplay);
    advance(pollInterval);
    EXPECT_FALSE(next());
}

TEST_F(TopWindowTrackerTest, AWindowBelongsToTheDisplayThatShowsMostOfIt) {
    track(1);
    next();
    desktop->now().moveWindow(1, mostlyOnSecondDisplay);
    EXPECT_EQ(nextWindow(), 1U) << "until the next list";
    advance(pollInterval);
    EXPECT_EQ(nextWindow(), 2U);
    desktop->now().removeDisplay(2);
    advance(pollInterval);
    EXPECT_EQ(nextWindow(), 1U) << "a display that has gone shows nothing";
    desktop->now().moveWindow(1, CGRect::make(2000, 0, 100, 80)).closeWindow(2);
    advance(pollInterval);
    EXPECT_EQ(nextWindow(), 0U) << "on no display";
}

TEST_F(TopWindowTrackerTest, WithoutADisplayTheFirstWindowCountsWhereverItIs) {
    desktop->now().moveWindow(1, CGRect::make(2000, 0, 100, 80));
    track(std::nullopt);
    EXPECT_EQ(nextWindow(), 1U);
    desktop->now().raiseWindow(2);
    advance(pollInterval);
    EXPECT_EQ(nextWindow(), 2U);
}

TEST_F(TopWindowTrackerTest, AWindowThatClosesIsGoneAtOnceAndTheNextOneComesWithTheList) {
    track(1);
    next();
    desktop->now().closeWindow(1);
    EXPECT_EQ(nextWindow(), 0U);
    advance(pollInterval);
    EXPECT_EQ(nextWindow(), 2U);
    desktop->now().failWindowList(std::make_exception_ptr(std::runtime_error("No answer.")));
    EXPECT_EQ(nextWindow(), 0U) << "a window server that can't be asked shows no window";
    desktop->now().failWindowList(nullptr);
    EXPECT_EQ(nextWindow(), 2U);
}

TEST_F(TopWindowTrackerTest, ASlowConsumerGetsTheLatestState) {
    track(1);
    for (int step = 1; step <= 5; ++step) {
        advance(0.01);
        desktop->now().moveWindow(1, CGRect::make(step, 10, 100, 80));
        Activity::waitUntilIdle();
    }
    EXPECT_EQ(next()->windowSnapshot->topLeftFrame.origin.x, 5);
    EXPECT_FALSE(next());
}

TEST_F(TopWindowTrackerTest, WhatRestsIsNotAskedAndABurstOfChangesCostsOneQuestion) {
    track(1);
    advance(1);
    const int atRest = windowList->questions;
    advance(60);
    EXPECT_EQ(windowList->questions, atRest);
    for (int change = 1; change <= 1000; ++change) {
        desktop->now().moveWindow(1, CGRect::make(change, 10, 100, 80));
    }
    advance(0.01);
    EXPECT_LE(windowList->questions, atRest + 10);
    next();
    EXPECT_FALSE(next());
}

TEST_F(TopWindowTrackerTest, ItsStreamsEndWithItAndEachCanBeDroppedAlone) {
    track(1);
    std::optional<AsyncStream<Update>> other(tracker->updates());
    Activity::waitUntilIdle();
    updates.reset();
    Activity::waitUntilIdle();
    updates.emplace(std::move(*other));
    EXPECT_EQ(nextWindow(), 1U);
    const std::weak_ptr<TopWindowTracker> weak = tracker;
    tracker = nullptr;
    EXPECT_TRUE(weak.expired());
    EXPECT_FALSE(clock->complete(updates->next()));
    EXPECT_EQ(desktop->sceneHandlers().windowsChanged->size(), 0U);
}

}  // namespace
}  // namespace zorvane
