#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Zorvane/Internal/Concurrency/TaskHandle.hpp"
#include "Zorvane/Internal/Recorders/ScreenRecorderExpansion.hpp"
#include "Zorvane/Platform/Foundation/NSError.hpp"
#include "tests/Support/ScreenRecording.hpp"

namespace zorvane {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

class ScreenRecorderFailureTest : public testing::ScreenRecordingTest {
  protected:
    /// The group text of the `ZVError` that `action` throws.
    template <class Action>
    std::string errorOf(Action action) {
        try {
            action();
        } catch (const ZVError& error) {
            return error.errorGroup();
        } catch (...) {
            return "another kind: " + debugDescription(std::current_exception());
        }
        return "no error";
    }
    static std::exception_ptr testError() { return std::make_exception_ptr(NSError("Test", 5)); }
};

TEST_F(ScreenRecorderFailureTest, ConstructionNamesWhatIsMissing) {
    struct Case {
        VirtualWritingConditions conditions;
        const char* message;
    };
    std::vector<Case> cases(5);
    cases[0] = {{.hasAssistant = false}, "Failed to initialize AVOutputSettingsAssistant."};
    cases[1] = {{.hasAudioSettings = false}, "AVOutputSettingsAssistant didn't provide any audioSettings."};
    cases[2] = {{.hasVideoSettings = false}, "AVOutputSettingsAssistant didn't provide any videoSettings."};
    cases[3] = {{.refusesVideoInput = true}, "Can't add video input to asset writer."};
    cases[4] = {{.refusesAudioInput = true}, "Can't add audio input to asset writer."};
    for (const Case& expected : cases) {
        writing->setConditions(expected.conditions);
        EXPECT_EQ(errorOf([&] { makeRecorder({.captureAudio = true}); }),
                  std::string("internalError: ") + expected.message);
        EXPECT_TRUE(log.has(ZVLogLevel::error, expected.message));
    }
}

TEST_F(ScreenRecorderFailureTest, WithoutPermissionNothingIsMade) {
    desktop->now().allowScreenCapture(false);
    EXPECT_EQ(errorOf([&] { makeRecorder(); }),
              "badOperation: Screen capture permission is required to record (a part of) the display. See "
              "ZVAuthorizationStatus.");
    EXPECT_TRUE(writing->writers().empty());
}

TEST_F(ScreenRecorderFailureTest, AWriterThatCantStartGivesItsError) {
    writing->setConditions({.startError = testError()});
    EXPECT_THROW(makeRecorder(), NSError);
}

TEST_F(ScreenRecorderFailureTest, AStreamThatCantStartFailsPreparation) {
    desktop->now().failStreamStart(testError());
    makeRecorder();
    EXPECT_THROW(prepare(), NSError);
    EXPECT_TRUE(log.has(ZVLogLevel::error, "Failed to start capture."));
}

TEST_F(ScreenRecorderFailureTest, AScreenWithoutPicturesFailsPreparationAfterThreeSeconds) {
    desktop->now().holdPictures(1, 10);
    makeRecorder();
    desktop->at(1).deliver(1, VirtualOddSample::idle);
    EXPECT_EQ(errorOf([&] { prepare(); }), "internalError: No video samples received from screen recording.");
    EXPECT_NEAR(secondsNow(), 3.0, 0.01);
}

TEST_F(ScreenRecorderFailureTest, MissingSoundFailsPreparationAfterTheWaitForPictures) {
    desktop->now().loseSound(100);
    makeRecorder({.captureAudio = true});
    EXPECT_EQ(errorOf([&] { prepare(); }), "internalError: No audio samples received from system audio.");
}

TEST_F(ScreenRecorderFailureTest, AStopByTheUserIsToldFromAnInterruption) {
    makeRecorder();
    prepare();
    start();
    advance(0.5);
    desktop->now().stopStreams(1, SCStreamErrorCode::userStopped);
    advance(0.1);
    EXPECT_THAT(signals(), ElementsAre("userStopped"));
    stop();
    EXPECT_TRUE(log.has(ZVLogLevel::info, "ScreenCaptureKit stream has already been stopped."));
    EXPECT_NEAR(sampleTimes().back(), 0.6, 1e-6) << "the movie still reaches the stop";
}

TEST_F(ScreenRecorderFailureTest, AnyOtherEndOfTheStreamInterrupts) {
    makeRecorder();
    prepare();
    start();
    desktop->now().stopStreams(1, testError());
    advance(0.1);
    ASSERT_EQ(signals().size(), 1u);
    EXPECT_THAT(signals()[0], HasSubstr("interrupted: "));
    EXPECT_EQ(stop().size(), 1u);
}

TEST_F(ScreenRecorderFailureTest, AnEndWithoutAnErrorInterruptsWithOneOfItsOwn) {
    makeRecorder();
    prepare();
    desktop->now().stopStreams(1, std::exception_ptr());
    advance(0.1);
    EXPECT_THAT(signals(), ElementsAre(HasSubstr("ScreenCaptureKit stopped without reporting any error information.")));
}

TEST_F(ScreenRecorderFailureTest, AnErrorOfTheWriterInterruptsAndReachesTheFinish) {
    writing->setConditions({.breakdown = VirtualBreakdown{1.0, testError()}});
    makeRecorder();
    prepare();
    start();
    advance(1.5);
    EXPECT_FALSE(signals().empty());
    EXPECT_THAT(signals()[0], HasSubstr("interrupted: "));
    EXPECT_THROW(stop(), NSError);
}

TEST_F(ScreenRecorderFailureTest, AWriterThatFailsBeforeItsSessionGivesItsOwnErrorAtTheFinish) {
    writing->setConditions({.breakdown = VirtualBreakdown{0.1, testError()}});
    makeRecorder();
    prepare();
    advance(0.5);
    start();
    advance(0.5);
    try {
        stop();
        ADD_FAILURE() << "no error";
    } catch (const NSError& error) {
        EXPECT_EQ(error.domain(), "Test");
    }
}

TEST_F(ScreenRecorderFailureTest, APreparationThatIsCancelledReportsNoError) {
    desktop->now().holdPictures(1, 10);
    makeRecorder();
    const auto handle = spawn(recorder->prepare());
    advance(1);
    handle.cancel();
    EXPECT_THROW(clock->complete(handle.value()), ZVCancelled);
    for (const ZVLogger::LogMessage& line : log.messages()) {
        EXPECT_NE(line.level, ZVLogLevel::error) << line.message;
    }
}

TEST_F(ScreenRecorderFailureTest, AnExceptionOfTheWritersSessionEndIsAnErrorOfTheFinish) {
    writing->setConditions({.raisesInEndSession = true});
    makeRecorder();
    prepare();
    start();
    advance(0.5);
    EXPECT_THROW(stop(), NSError);
}

TEST_F(ScreenRecorderFailureTest, ARecorderMayGoWhileItRecords) {
    makeRecorder();
    prepare();
    start();
    advance(0.5);
    recorder.reset();
    desktop->now().paint(1, VirtualColor::white());
    advance(5);
    EXPECT_TRUE(signals().empty());
}

TEST_F(ScreenRecorderFailureTest, AnUnknownDisplayOrWindowIsNamed) {
    const auto logger = log.logger<ScreenRecorderFailureTest>();
    EXPECT_EQ(errorOf([&] { clock->complete(createDisplayFilter(5, {}, logger)); }),
              "invalidConfiguration: Can't find display with ID: 5");
    EXPECT_EQ(errorOf([&] { clock->complete(createWindowBasedCropFilter(9, logger)); }),
              "invalidConfiguration: Can't find window with ID: 9");
    EXPECT_TRUE(log.has(ZVLogLevel::error, "Can't find display for given ID.", {{"displaySerialNumber", "5"}}));
}

TEST_F(ScreenRecorderFailureTest, AWindowOnNoDisplayIsNamed) {
    const SCWindow window{.windowID = 9, .frame = CGRect::make(5000, 5000, 10, 10), .isOnScreen = true};
    desktop->now().setWindows({VirtualWindow{window, std::nullopt}});
    EXPECT_EQ(
        errorOf([&] { clock->complete(createWindowBasedCropFilter(9, log.logger<ScreenRecorderFailureTest>())); }),
        "invalidConfiguration: Can't find display for window: 9");
}

TEST_F(ScreenRecorderFailureTest, AWindowCropShowsOnlyTheTargetOfItsApplication) {
    const SCRunningApplication mine{.processID = 10};
    const SCRunningApplication other{.processID = 11};
    const auto window = [](std::uint32_t id, std::optional<SCRunningApplication> owner) {
        return VirtualWindow{SCWindow{.windowID = id,
                                      .frame = CGRect::make(8, 4, 20, 10),
                                      .isOnScreen = true,
                                      .owningApplication = std::move(owner)},
                             std::nullopt};
    };
    desktop->now().setApplications({mine, other}).setWindows({window(1, mine), window(2, mine), window(3, other)});
    const ResolvedContentFilter resolved =
        clock->complete(createWindowBasedCropFilter(1, log.logger<ScreenRecorderFailureTest>()));
    EXPECT_EQ(resolved.cropRect, CGRect::make(8, 4, 20, 10));
    ASSERT_EQ(resolved.filter.applications.size(), 1u);
    EXPECT_EQ(resolved.filter.applications[0].processID, 11);
    ASSERT_EQ(resolved.filter.windows.size(), 1u);
    EXPECT_EQ(resolved.filter.windows[0].windowID, 2u);
}

}  // namespace
}  // namespace zorvane
