#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <limits>

#include "Zorvane/Platform/Foundation/NSError.hpp"
#include "tests/Support/FileSizeLimit.hpp"
#include "tests/Support/InputRecording.hpp"

namespace zorvane {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

const VirtualKey a{.keycode = 0, .characters = "a", .charactersIgnoringModifiers = "a"};

using InputRecorderTroubleTest = testing::InputRecordingTest;

TEST_F(InputRecorderTroubleTest, ListeningThatFailsAbortsWithATextThatHelps) {
    const auto denied = std::make_exception_ptr(NSError("Desktop", 5, {.localizedDescription = "Join the group."}));
    struct Row {
        VirtualListeningFailure taps;
        VirtualListeningFailure monitors;
        Mode mode;
        const char* abort;
    };
    const Row rows[] = {
        {nullptr, std::nullopt, Mode::keyboardEvents,
         "tapCreationFailed | Can't record the keyboard because the desktop"},
        {denied, std::nullopt, Mode::mouseAndKeyboardEvents,
         "Error Domain=Desktop Code=5 \"Join the group.\" | Join the group."},
        {std::nullopt, nullptr, Mode::mouseEvents, "Global monitor returned nil. | Failed to setup mouse monitoring."},
        {std::nullopt, denied, Mode::mouseEvents, "Error Domain=Desktop Code=5 \"Join the group.\" | Join the group."},
    };
    for (const Row& row : rows) {
        desktop->now().failTaps(row.taps).failMonitors(row.monitors);
        prepare(row.mode);
        EXPECT_THAT(aborts(), ElementsAre(StartsWith(row.abort)));
        forgetAborts();
        std::filesystem::remove(sideFile);
    }
    EXPECT_TRUE(log.has(ZVLogLevel::error, "Event monitor stopped with error, aborting."));
}

TEST_F(InputRecorderTroubleTest, ATapThatTheSystemEndsAbortsBehindWhatItHeard) {
    keepArrow();
    prepare();
    startAt(0);
    desktop->at(0.5).pressKey(a).disableTaps(CGEventType::tapDisabledByTimeout).releaseKey(a);
    advance(0.6);
    EXPECT_THAT(aborts(), ElementsAre(StartsWith("tapDisabledByUserInput | Recording mouse and keyboard ended")));
    EXPECT_EQ(desktop->eventHandlers()->size(), 0U) << "nobody is left to take what would be heard";
    EXPECT_THAT(stopAt(1), ElementsAre("0.500 down A \"a\""));
}

TEST_F(InputRecorderTroubleTest, ATimelineThatStaysEmptyAborts) {
    prepare();
    startAt(0);
    desktop->at(0.5).movePointer({{0, 0}});
    advance(0.52);
    EXPECT_THAT(aborts(), IsEmpty()) << "it gives the cursor some time";
    advance(0.02);
    EXPECT_THAT(aborts(), ElementsAre(StartsWith("Cursor timeline empty.")));
}

TEST_F(InputRecorderTroubleTest, AnEventThatCannotBeWrittenIsLostAlone) {
    keepArrow();
    prepare();
    startAt(0);
    constexpr double infinity = std::numeric_limits<double>::infinity();
    CGEvent withoutNSEvent;
    withoutNSEvent.type = CGEventType::keyDown;
    desktop->at(0.3).movePointer({{0, 0}}).movePointer({{infinity, 0}}).movePointer({{0, infinity}});
    desktop->at(0.4).movePointer({{320, 0}}).tellEvent(withoutNSEvent);
    EXPECT_THAT(stopAt(1), ElementsAre("0.300 moved arrow 0,0", "0.400 moved arrow 1,0"));
    EXPECT_EQ(log.count(ZVLogLevel::warning, "Failed to encode input event, it is lost."), 1U);
    EXPECT_TRUE(log.has(ZVLogLevel::warning, "Failed to convert CGEvent to NSEvent.", {{"CGEventType", "10"}}));
    EXPECT_THAT(aborts(), IsEmpty());
}

TEST_F(InputRecorderTroubleTest, AFileThatCannotBeWrittenAborts) {
    keepArrow();
    prepare();
    startAt(0);
    desktop->at(0.3).pressKey(a);
    advance(0.4);
    {
        const testing::FileSizeLimit full(std::filesystem::file_size(sideFile));
        desktop->now().releaseKey(a);
        advance(0.1);
    }
    EXPECT_THAT(aborts(), ElementsAre(HasSubstr("File too large")));
    EXPECT_THAT(stopAt(1), ElementsAre("0.300 down A \"a\"")) << "what was written before is closed";
}

TEST_F(InputRecorderTroubleTest, IsNotMadeOverAnotherFileOrOverNothing) {
    EXPECT_THROW(prepare(Mode::mouseEvents, CGRect::make(0, 0, 320, 0)), ZVError);
    EXPECT_FALSE(std::filesystem::exists(sideFile));
    std::ofstream(sideFile) << "mine";
    EXPECT_THROW(prepare(), ZVError);
    EXPECT_EQ(std::filesystem::file_size(sideFile), 4U);
}

}  // namespace
}  // namespace zorvane
