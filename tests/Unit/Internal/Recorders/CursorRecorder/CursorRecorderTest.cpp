#include "Zorvane/Internal/Recorders/CursorRecorder/CursorRecorder.hpp"

#include <gtest/gtest.h>

#include <atomic>

#include "Zorvane/Platform/Virtual/VirtualCursor.hpp"
#include "tests/Support/LogCapture.hpp"
#include "tests/Support/VirtualWorld.hpp"

namespace zorvane {
namespace {

/// Counts the looks at the cursor.
class CountedCursors final : public NSCursors {
  public:
    explicit CountedCursors(std::shared_ptr<NSCursors> cursors) : cursors_(std::move(cursors)) {}

    std::optional<NSCursor> currentSystemCursor() override {
        ++looks;
        return cursors_->currentSystemCursor();
    }
    std::optional<NSCursor> systemCursor(ZVCursorType type) override { return cursors_->systemCursor(type); }

    std::atomic<int> looks = 0;

  private:
    const std::shared_ptr<NSCursors> cursors_;
};

/// What each operation of a link gives.
struct LinkFaults {
    CVReturn create = kCVReturnSuccess;
    bool isMissing = false;
    CVReturn setHandler = kCVReturnSuccess;
    CVReturn setDisplay = kCVReturnSuccess;
    CVReturn start = kCVReturnSuccess;
    CVReturn stop = kCVReturnSuccess;
};

class FaultyLink final : public CVDisplayLink {
  public:
    explicit FaultyLink(const LinkFaults& faults) : faults_(faults) {}
    CVReturn setOutputHandler(OutputHandler) override { return faults_.setHandler; }
    CVReturn setCurrentCGDisplay(CGDirectDisplayID) override { return faults_.setDisplay; }
    CGDirectDisplayID currentCGDisplay() const override { return 1; }
    CVReturn start() override { return faults_.start; }
    CVReturn stop() override { return faults_.stop; }

  private:
    const LinkFaults faults_;
};

class FaultyLinks final : public CVDisplayLinks {
  public:
    Created createWithActiveCGDisplays() override {
        return {faults.create, faults.isMissing ? nullptr : std::make_unique<FaultyLink>(faults)};
    }

    LinkFaults faults;
};

class CursorRecorderTest : public testing::VirtualWorldTest {
  protected:
    CursorRecorderTest() {
        Platform platform = makeVirtualPlatform(desktop, writing);
        cursors = std::make_shared<CountedCursors>(platform.cursors);
        platform.cursors = cursors;
        Platform::install(std::move(platform));
        desktop->now()
            .putDisplay({.displayID = 1, .serialNumber = 77, .frame = CGRect::make(0, 0, 320, 200), .refreshRate = 50})
            .movePointer(CGPoint{10, 10});
    }

    std::unique_ptr<CursorRecorder> makeRecorder() {
        return std::make_unique<CursorRecorder>("Ab3", log.logger<CursorRecorderTest>());
    }
    std::unique_ptr<CursorRecorder> makePrepared() {
        auto recorder = makeRecorder();
        clock->complete(recorder->prepare());
        return recorder;
    }
    int looksIn(double seconds) {
        const int before = cursors->looks;
        advance(seconds);
        return cursors->looks - before;
    }

    LogCapture log;
    std::shared_ptr<CountedCursors> cursors;
};

CursorTimeline::QueryResult cursorAt(const CursorRecorder& recorder, double seconds) {
    return recorder.timeline()->cursor(CMTime::fromSeconds(seconds, 1'000'000'000));
}

TEST_F(CursorRecorderTest, EveryChangeIsNotedUntilTheEndAndOneLookIsTakenAfterIt) {
    desktop->at(0.5).setCursor(virtualCursor(ZVCursorType::iBeam)).movePointer(CGPoint{11, 10});
    desktop->at(1.0).setCursor(virtualCursor("own", {0, 0}));
    const auto recorder = makePrepared();
    advance(1.5);
    const double end = secondsNow();
    EXPECT_TRUE(clock->complete(recorder->finish()).empty());

    const auto changes = recorder->timeline()->observations(kCMTimeNegativeInfinity, kCMTimePositiveInfinity);
    ASSERT_EQ(changes.size(), 3U);
    EXPECT_EQ(changes[0].cursorType, ZVCursorType::arrow);
    EXPECT_EQ(changes[1].cursorType, ZVCursorType::iBeam);
    EXPECT_EQ(changes[2].cursorType, ZVCursorType::custom);
    EXPECT_NEAR(changes[1].timestamp.seconds() - hostSeconds(0.5), 0.01, 0.01);
    EXPECT_TRUE(std::holds_alternative<CursorTimeline::Found>(cursorAt(*recorder, hostSeconds(end))));
    EXPECT_EQ(looksIn(1), 0);
    EXPECT_TRUE(log.has(ZVLogLevel::debug, "Finished.", {{"CursorRecorder", "Ab3"}, {"displayId", "1"}}));
}

TEST_F(CursorRecorderTest, ACancelledRecorderStopsAndSoDoesOneThatIsDropped) {
    auto recorder = makePrepared();
    EXPECT_EQ(looksIn(1), 50);
    clock->complete(recorder->cancel());
    EXPECT_EQ(looksIn(1), 0);
    recorder = makePrepared();
    recorder.reset();
    EXPECT_EQ(looksIn(1), 0);
}

TEST_F(CursorRecorderTest, TheLinkFollowsThePointerToAnotherDisplay) {
    desktop->now().putDisplay(
        {.displayID = 2, .serialNumber = 78, .frame = CGRect::make(320, 0, 320, 200), .refreshRate = 125});
    const auto recorder = makePrepared();
    EXPECT_EQ(looksIn(1), 50);
    desktop->now().movePointer(CGPoint{320, 0});
    advance(0.1);
    EXPECT_EQ(looksIn(1), 125);
    EXPECT_TRUE(log.has(ZVLogLevel::debug, "Switched link to display containing mouse location.",
                        {{"fromDisplay", "1"}, {"toDisplay", "2"}}));
    EXPECT_EQ(log.count(ZVLogLevel::debug, "Switched link to display containing mouse location."), 1U);

    desktop->now().movePointer(CGPoint{-5, -5});
    EXPECT_EQ(looksIn(25), 125 * 25) << "it stays where it is";
    EXPECT_EQ(log.count(ZVLogLevel::warning, "No active display found containing the mouse location."), 3U);
    EXPECT_TRUE(log.has(ZVLogLevel::warning, "No active display found containing the mouse location.",
                        {{"mouseLocation", "(-5, -5)"}, {"rateLimitedAt", "10.0/sec"}}));
    desktop->now().removeDisplay(2).movePointer(CGPoint{1, 1});
    advance(0.1);
    EXPECT_EQ(looksIn(1), 50);
}

TEST_F(CursorRecorderTest, WhatCanNotBeAskedForIsWarnedOfNowAndThenAndComesBackByItself) {
    const auto recorder = makePrepared();
    desktop->now().setCursor(std::nullopt);
    advance(30);
    EXPECT_EQ(log.count(ZVLogLevel::warning, "Skipping frame; failed to retreive system cursor."), 3U);
    desktop->now().setCursor(virtualCursor(ZVCursorType::openHand)).movePointer(std::nullopt);
    advance(1);
    EXPECT_EQ(log.count(ZVLogLevel::warning, "Skipping frame; failed to retreive mouse location."), 1U);
    desktop->now().movePointer(CGPoint{1, 1}).failDisplayList(CGError::cannotComplete);
    advance(1);
    EXPECT_EQ(log.count(ZVLogLevel::warning, "Error while getting active display containing mouse location."), 1U);
    EXPECT_TRUE(std::holds_alternative<CursorTimeline::Found>(cursorAt(*recorder, hostSeconds(secondsNow() - 0.1))));
    const auto last = recorder->timeline()->observations(kCMTimeNegativeInfinity, kCMTimePositiveInfinity).back();
    EXPECT_EQ(last.cursorId, "openHand");
}

TEST_F(CursorRecorderTest, ALinkThatFailsIsToldOf) {
    const auto links = std::make_shared<FaultyLinks>();
    Platform platform = makeVirtualPlatform(desktop, writing);
    platform.displayLinks = links;
    Platform::install(std::move(platform));
    const struct {
        LinkFaults faults;
        const char* error;
    } cases[]{
        {{.create = -6661}, "Display link creation failed. (Error: -6661)"},
        {{.isMissing = true}, "Display link creation failed. (Error: Unexpected nil value)"},
        {{.setHandler = -6662}, "Failed to set display link output handler. (Error: -6662)"},
        {{.setDisplay = -6670}, "Failed to set display link display. (Display: 1 Error: -6670)"},
        {{.start = -6673}, "Failed to start display link. (Error: -6673)"},
    };
    for (const auto& each : cases) {
        links->faults = each.faults;
        try {
            makePrepared();
            ADD_FAILURE() << "no error: " << each.error;
        } catch (const ZVError& error) {
            EXPECT_EQ(error.debugDescription(), each.error);
            EXPECT_FALSE(error.userMessage());
        }
    }
    EXPECT_TRUE(log.has(ZVLogLevel::error, "Failed to set display link output handler.", {{"errorCode", "-6662"}}));

    links->faults = {.stop = -6672};
    EXPECT_TRUE(clock->complete(makePrepared()->finish()).empty());
    EXPECT_TRUE(log.has(ZVLogLevel::warning, "Failed to stop display link.", {{"errorCode", "-6672"}}));
}

}  // namespace
}  // namespace zorvane
