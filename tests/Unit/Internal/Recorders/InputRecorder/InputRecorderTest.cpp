#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/Support/InputRecording.hpp"

namespace zorvane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using Cursor = ZVCursorType;

const VirtualKey a{.keycode = 0, .characters = "a", .charactersIgnoringModifiers = "a"};

using InputRecorderTest = testing::InputRecordingTest;

TEST_F(InputRecorderTest, KeepsWhatHappensFromTheStartOnUntilTheStop) {
    keepArrow();
    prepare();
    desktop->at(0.999).movePointer({{0, 0}});
    desktop->at(1.0).movePointer({{80, 50}}).pressButton();
    desktop->at(1.5).movePointer({{-32, 200}}).releaseButton().pressButton(3);
    desktop->at(1.6).setFlags(CGEventFlags::maskShift | CGEventFlags::maskCommand).pressKey(a).pressKey(a);
    desktop->at(1.999).releaseKey(a);
    desktop->at(2.0).setFlags(CGEventFlags::none).releaseButton(3);
    startAt(1);
    EXPECT_THAT(stopAt(2), ElementsAre("0.000 moved arrow 0.25,0.25",              //
                                       "0.000 down primary arrow 0.25,0.25",       //
                                       "0.500 dragged primary arrow -0.1,1",       //
                                       "0.500 up primary arrow -0.1,1",            //
                                       "0.500 down other arrow -0.1,1",            //
                                       "0.600 modifiers shift command",            //
                                       "0.600 down A \"a\" shift command",         //
                                       "0.600 down A \"a\" repeat shift command",  //
                                       "0.999 up A \"a\" shift command"));
    EXPECT_EQ(assets,
              (std::vector<ZVBundleInfo::FileAsset>{{ZVBundleInfo::FileAssetType::mouse, "screen.input-events.json"}}));
}

TEST_F(InputRecorderTest, HearsNoMoreThanItsModeAsksFor) {
    keepArrow();
    desktop->now().failTaps(nullptr);  // the mouse needs none
    prepare(Mode::mouseEvents);
    startAt(0);
    desktop->at(0.5).setFlags(CGEventFlags::maskShift).pressKey(a).movePointer({{0, 0}});
    EXPECT_THAT(stopAt(1), ElementsAre("0.500 moved arrow 0,0 shift"));
    EXPECT_THAT(aborts(), IsEmpty());
}

TEST_F(InputRecorderTest, TheKeyboardAloneComesWithoutTheMouse) {
    keepArrow();
    desktop->now().failMonitors(nullptr);
    prepare(Mode::keyboardEvents);
    startAt(0);
    desktop->at(0.5).movePointer({{0, 0}}).pressButton().setFlags(CGEventFlags::maskControl);
    EXPECT_THAT(stopAt(1), ElementsAre("0.500 modifiers control"));
    EXPECT_THAT(aborts(), IsEmpty());
}

TEST_F(InputRecorderTest, ChangesOfTheCursorStandWhereTheyHappened) {
    look(0, Cursor::iBeam);  // before the recording
    look(1.2, Cursor::arrow, {32, 20});
    look(1.25, Cursor::arrow, {64, 40});
    look(1.3, Cursor::iBeam, {96, 60});
    look(1.8, Cursor::arrow, {320, 200});
    look(2.0, Cursor::iBeam, {160, 100});
    look(2.1, Cursor::arrow, {160, 100});
    prepare();
    startAt(1);
    desktop->at(1.1).movePointer({{0, 0}});
    desktop->at(1.3).movePointer({{96, 60}});
    EXPECT_THAT(stopAt(2), ElementsAre("0.100 moved iBeam 0,0",              //
                                       "0.200 cursorChanged arrow 0.1,0.1",  //
                                       "0.300 cursorChanged iBeam 0.3,0.3",  //
                                       "0.300 moved iBeam 0.3,0.3",          //
                                       "0.800 cursorChanged arrow 1,1",      //
                                       "1.000 cursorChanged iBeam 0.5,0.5"));
}

TEST_F(InputRecorderTest, AChangeOfTheCursorThatIsKnownLateIsNeitherLostNorOutOfOrder) {
    look(0, Cursor::arrow);
    prepare();
    startAt(0);
    desktop->at(0.5).setFlags(CGEventFlags::maskShift);
    advance(0.6);
    look(0.4, Cursor::iBeam);
    EXPECT_THAT(stopAt(1), ElementsAre("0.500 modifiers shift", "0.500 cursorChanged iBeam 0,0"));
}

TEST_F(InputRecorderTest, WaitsForTheLookThatCoversAnEvent) {
    look(0, Cursor::arrow);
    prepare();
    startAt(0);
    desktop->at(0.5).movePointer({{0, 0}});
    advance(0.51);
    look(0.51, Cursor::iBeam);
    look(0.52, Cursor::arrow);
    desktop->at(0.6).movePointer({{160, 0}});
    advance(0.3);
    EXPECT_TRUE(log.has(ZVLogLevel::trace, "Input event occured after last cursor capture, retrying.",
                        {{"attempt", "1"}, {"maxAttempts", "3"}}));
    EXPECT_TRUE(log.has(ZVLogLevel::info,
                        "Input event occured after last cursor capture, falling back to last known cursor.",
                        {{"attempt", "3"}}));
    EXPECT_THAT(stopAt(1), ElementsAre("0.500 moved arrow 0,0", "0.510 cursorChanged iBeam 0,0",
                                       "0.520 cursorChanged arrow 0,0", "0.600 moved arrow 0.5,0"));
}

TEST_F(InputRecorderTest, AChangeOfTheCursorThatIsKnownDuringTheWaitStandsAheadOfTheEvent) {
    look(0, Cursor::arrow);
    prepare();
    startAt(0);
    desktop->at(0.5).movePointer({{160, 100}});
    advance(0.505);
    look(0.499, Cursor::iBeam, {64, 40});  // an answer that took its time
    look(0.51, Cursor::iBeam, {160, 100});
    EXPECT_THAT(stopAt(1), ElementsAre("0.499 cursorChanged iBeam 0.2,0.2", "0.500 moved iBeam 0.5,0.5"));
}

TEST_F(InputRecorderTest, AnEventBeforeTheFirstLookHasTheFirstCursor) {
    look(0.7, Cursor::iBeam);
    prepare();
    startAt(0);
    desktop->at(0.5).movePointer({{0, 0}});
    EXPECT_THAT(stopAt(1), ElementsAre("0.500 moved iBeam 0,0", "0.700 cursorChanged iBeam 0,0"));
    EXPECT_TRUE(log.has(ZVLogLevel::info,
                        "Input event occured before first cursor was captured, falling back to first known cursor."));
}

TEST_F(InputRecorderTest, TheStopLosesNothingThatHappenedBeforeIt) {
    look(0, Cursor::arrow);
    prepare();
    startAt(0);
    desktop->at(0.1).delayEvents(5);  // all of them are still on their way at the stop
    constexpr int count = 1000;
    for (int number = 0; number < count; ++number) {
        desktop->at(0.5 + number * 1e-4).movePointer({{number * 0.32, 0}});
    }
    const std::vector<std::string> lines = stopAt(1);
    ASSERT_THAT(lines, SizeIs(count));
    EXPECT_EQ(lines.front(), "0.500 moved arrow 0,0");
    EXPECT_EQ(lines.back(), "0.600 moved arrow 0.999,0");
    EXPECT_LT(secondsNow(), 1.1) << "each event waited for a look that never came";
}

TEST_F(InputRecorderTest, GoesWithoutATraceWhenItIsDroppedOrCancelled) {
    keepArrow();
    startAt(0);
    prepare();
    clock->complete(recorder->cancel());
    desktop->now().movePointer({{0, 0}});
    recorder = nullptr;
    std::filesystem::remove(sideFile);
    prepare();
    desktop->now().movePointer({{0, 0}});
    recorder = nullptr;
    EXPECT_EQ(desktop->eventHandlers()->size(), 0U) << "it still listens";
    EXPECT_EQ(interval.use_count(), 1) << "its loop goes on";
    EXPECT_THAT(aborts(), IsEmpty());
}

}  // namespace
}  // namespace zorvane
