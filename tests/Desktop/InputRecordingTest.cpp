#include <gmock/gmock.h>

#include <regex>

#include "Zorvane/Platform/Foundation/HostClock.hpp"
#include "tests/Desktop/DisplayRecordingFixture.hpp"
#include "tests/Support/InputEventText.hpp"
#include "tests/Support/X11TestUser.hpp"

namespace zorvane {
namespace {

using ::testing::ElementsAre;

/// Keys of a keyboard of the usual kind.
constexpr std::uint8_t keyA = 38;
constexpr std::uint8_t keyShift = 50;
constexpr std::uint8_t keyF5 = 71;
constexpr std::uint8_t keyReturn = 36;

/// The server counts milliseconds, on a clock that may move in steps of four; in seconds.
constexpr double resolution = 0.005;

class InputRecordingTest : public testing::DisplayRecordingTest {
  protected:
    ZVRecorder makeRecorder() const {
        const auto display = ZVRecorder::SchemaItem::display(
            ZVDisplay::displays().at(0)->id(), {.mouseEvents = true, .keyboardEvents = true}, "screen.mov");
        return ZVRecorder({display}, directory_.path() / "bundle");
    }

    /// What happened, without changes of the cursor, times and the cursor's name.
    static std::vector<std::string> acts(const std::vector<ZVInputEvent>& events) {
        std::vector<std::string> acts;
        for (const ZVInputEvent& event : events) {
            const std::string text = testing::textOf(event);
            if (text.find("cursorChanged") == std::string::npos) {
                acts.push_back(std::regex_replace(text, std::regex("^[0-9.]+ | \\w+(?= [0-9.]+,)"), ""));
            }
        }
        return acts;
    }

    X11TestUser user_;
};

TEST_F(InputRecordingTest, ASideFileHoldsWhatTheUserDidUpToTheStop) {
    ZVRecorder recorder = makeRecorder();
    recorder.prepare().get();
    user_.moveTo(1, 1).type(keyReturn).act();
    pass(resolution);
    recorder.start().get();
    pass(resolution);
    user_.moveTo(64, 48).press(1).moveTo(320, 240).release(1).click(3).act();
    user_.keyDown(keyShift).type(keyA).keyUp(keyShift).type(keyA).type(keyF5).act();
    user_.warpTo(0, 120).moveTo(639, 479).act();
    pass(resolution);  // shorter than the server holds events back
    const auto result = recorder.stop().get();
    ASSERT_EQ(result.bundleInfo.files.size(), 2U);
    EXPECT_THAT(acts(ZVInputEvent::read(result.bundleURL / result.bundleInfo.files.at(1).filename)),
                ElementsAre("moved 0.1,0.1", "down primary 0.1,0.1", "dragged primary 0.5,0.5", "up primary 0.5,0.5",
                            "down secondary 0.5,0.5", "up secondary 0.5,0.5",  //
                            "modifiers shift", "down A \"A\" shift", "up A \"A\" shift", "modifiers", "down A \"a\"",
                            "up A \"a\"", "down F5", "up F5",  //
                            "moved 0,0.25", ::testing::StartsWith("moved 0.998")));
}

TEST_F(InputRecordingTest, EventsStandAtTheTimeAtWhichTheyHappened) {
    ZVRecorder recorder = makeRecorder();
    begin(recorder);
    pass(resolution);
    const auto now = [] { return std::chrono::duration<double>(Platform::current()->clock->now()).count(); };
    std::vector<std::pair<double, double>> moments;
    for (std::int16_t x = 10; x < 20; ++x) {
        const double before = now();
        user_.moveTo(x, 10).type(keyA).act();
        moments.emplace_back(before, now());
        pass(0.037);
    }
    const auto result = recorder.stop().get();
    const double start = recorder.statistics().recordFrom;
    std::size_t moved = 0;
    std::size_t typed = 0;
    for (const ZVInputEvent& event : ZVInputEvent::read(result.bundleURL / "screen.input-events.json")) {
        const std::string text = testing::textOf(event);
        if (text.find("cursorChanged") != std::string::npos || text.find(" up ") != std::string::npos) {
            continue;
        }
        std::size_t& count = event.type() == ZVInputEvent::TypeValue::mouse ? moved : typed;
        ASSERT_LT(count, moments.size());
        const auto& [before, after] = moments[count++];
        EXPECT_GT(start + event.time().seconds(), before - resolution) << text;
        EXPECT_LT(start + event.time().seconds(), after + resolution) << text;
    }
    EXPECT_EQ(moved, moments.size());
    EXPECT_EQ(typed, moments.size());
}

}  // namespace
}  // namespace zorvane
