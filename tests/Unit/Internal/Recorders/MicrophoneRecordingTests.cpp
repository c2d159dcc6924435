#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <thread>

#include "Zorvane/Platform/CoreMedia/CMSampleBuffer.hpp"
#include "tests/Support/SoundRecording.hpp"

namespace zorvane {
namespace {

using ::testing::ElementsAre;
using Item = ZVSchemaItem;

constexpr double oneMillisecond = 0.001;

class MicrophoneRecordingTest : public testing::SoundRecordingTest {};

TEST_F(MicrophoneRecordingTest, AFileIsFullOfSoundInItsPlaceFromTheStartToTheStopWhateverTheFormat) {
    const AVAudioFormat formats[] = {{AVAudioCommonFormat::float32, 48000, 1},
                                     {AVAudioCommonFormat::int16, 44100, 2},
                                     {AVAudioCommonFormat::int32, 96000, 6},
                                     {AVAudioCommonFormat::int16, 8000, 1}};
    for (std::size_t index = 0; index < std::size(formats); ++index) {
        plugMicrophone(formats[index]);
        desktop->now().changeMicrophone("mic", [](VirtualMicrophone& microphone) {
            microphone.latency = std::chrono::milliseconds(40);
            microphone.jitter = std::chrono::milliseconds(5);
        });
        const auto result = record({Item::microphone("mic", "voice.m4a")}, 1.0);
        const testing::RecordedSound sound = this->sound(index);
        EXPECT_NEAR(sound.duration(), 1.0, oneMillisecond);
        EXPECT_NEAR(sound.begin + sound.duration(), recorder->statistics().recordUntil - hostSeconds(0),
                    1 / sound.sampleRate);
        EXPECT_EQ(sound.missing(), 0) << "sound that was still under way at the stop is waited for";
        expectInPlace(sound, 0, 1);
        const AVAudioSettings settings = movie(index).tracks.at(0).audioSettings.value();
        EXPECT_EQ(settings.sampleRate, formats[index].sampleRate);
        EXPECT_EQ(settings.numberOfChannels, std::min(formats[index].channelCount, 2U));
        ASSERT_EQ(result.bundleInfo.files.size(), 1u);
        EXPECT_EQ(result.bundleInfo.files[0].type, ZVBundleInfo::FileAssetType::audio);
        EXPECT_EQ(result.bundleInfo.files[0].filename, "voice.m4a");
    }
}

TEST_F(MicrophoneRecordingTest, AStallIsSilenceInItsPlace) {
    make({Item::microphone("mic")});
    prepare();
    start();
    desktop->at(secondsNow() + 0.4).loseMicrophoneSound("mic", 0.5);
    advance(2);
    stop();
    const testing::RecordedSound sound = this->sound();
    EXPECT_EQ(sound.missing(), 0);
    EXPECT_EQ(sound.peak(0.45, 0.85), 0);
    expectInPlace(sound, 0, 0.38);
    expectInPlace(sound, 0.94, 2);
    EXPECT_EQ(log.count(ZVLogLevel::info, "Detected gap in audio."), 1u);
}

TEST_F(MicrophoneRecordingTest, SoundThatBeginsLateOrIsGivenTwiceStaysInItsPlace) {
    make({Item::microphone("mic")});
    desktop->at(1.8).loseMicrophoneSound("mic", 1);  // over the start
    prepare();
    advance(2 - secondsNow());
    start();
    desktop->at(4).changeMicrophone("mic", [](VirtualMicrophone& microphone) { microphone.jumpedFrames -= 960; });
    advance(3);
    stop();
    const testing::RecordedSound sound = this->sound();
    EXPECT_EQ(sound.missing(), 0);
    EXPECT_EQ(sound.peak(0, 0.75), 0);
    expectInPlace(sound, 0.85, 1.95);
    expectInPlace(sound, 2.2, 3);
}

TEST_F(MicrophoneRecordingTest, AnUnpluggedMicrophoneLeavesSilenceAndIsTakenUpAgain) {
    make({Item::microphone("mic")});
    prepare();
    start();
    const double startedAt = secondsNow();
    desktop->at(startedAt + 1).unplugDevice("mic");
    desktop->at(startedAt + 4).plugDevice(VirtualDevice::microphone("mic", "Desk Mic"));
    advance(5);
    EXPECT_THAT(notices(), ElementsAre("interrupted Desk Mic for a reason", "resumed Desk Mic"));
    desktop->now().unplugDevice("mic");
    advance(1);
    const double stoppedAt = secondsNow();
    stop();
    EXPECT_NEAR(secondsNow() - stoppedAt, 0.25, 0.01) << "what a dead source costs the stop";
    const testing::RecordedSound sound = this->sound();
    EXPECT_NEAR(sound.duration(), 6, oneMillisecond);
    EXPECT_NEAR(sound.missing(), 1, 0.05) << "up to the end it is the writer that adds silence";
    expectInPlace(sound, 0, 0.97);
    EXPECT_EQ(sound.peak(1.03, 3.97), 0);
    expectInPlace(sound, 4.05, 4.95);
    EXPECT_EQ(log.count(ZVLogLevel::warning, "Source of sound was interrupted, recording silence until it resumes."),
              2u);
}

TEST_F(MicrophoneRecordingTest, ARecordingInWhichNothingCameHasItsFullLength) {
    make({Item::microphone("mic")});
    prepare();
    desktop->now().changeMicrophone("mic", [](VirtualMicrophone& microphone) { microphone.isMute = true; });
    advance(0.5);
    start();
    advance(2);
    const auto result = stop();
    EXPECT_TRUE(movie().tracks.at(0).samples.empty());
    EXPECT_NEAR((*movie().sessionEnd - *movie().sessionStart).seconds(), 2, oneMillisecond);
    EXPECT_EQ(result.bundleInfo.files.size(), 1u);
}

TEST_F(MicrophoneRecordingTest, AClockThatRunsOffIsFollowed) {
    for (const double drift : {200.0, -200.0}) {
        desktop->now().changeMicrophone("mic", [drift](VirtualMicrophone& microphone) {
            microphone.driftPPM = drift;
            microphone.jitter = std::chrono::milliseconds(2);
        });
        record({Item::microphone("mic")}, 60);
        const testing::RecordedSound sound = this->sound(drift > 0 ? 0 : 1);
        EXPECT_EQ(sound.missing(), 0);
        EXPECT_NEAR(sound.delay(tone, 59, 60), 0, oneMillisecond) << "it would be 12 ms";
    }
}

TEST_F(MicrophoneRecordingTest, AFormatThatChangesInMidStreamIsConverted) {
    make({Item::microphone("mic")});
    prepare();
    start();
    desktop->at(secondsNow() + 1).changeMicrophone("mic", [](VirtualMicrophone& microphone) {
        microphone.format = {AVAudioCommonFormat::int16, 16000, 2};
    });
    advance(2);
    stop();
    const testing::RecordedSound sound = this->sound();
    EXPECT_LT(sound.missing(), oneMillisecond);
    expectInPlace(sound, 0, 0.95);
    expectInPlace(sound, 1.1, 2);
}

TEST_F(MicrophoneRecordingTest, ASessionWithoutAClockOrWithAnotherOneIsPlacedOnTheHostClock) {
    const std::optional<double> clocks[] = {std::nullopt, 5.00001};
    for (std::size_t index = 0; index < std::size(clocks); ++index) {
        desktop->now().setCaptureClock(clocks[index]);
        record({Item::microphone("mic")}, 1);
        EXPECT_EQ(sound(index).missing(), 0);
        // Without a clock the arrival is all there is to go by, which is the end of a block and the aligner's delay.
        EXPECT_NEAR(sound(index).delay(tone, 0, 1), 0, clocks[index] ? 0.0001 : 0.0049);
    }
    EXPECT_EQ(log.count(ZVLogLevel::warning,
                        "AVCaptureSession has no synchronization clock, falling back to host time clock polling."),
              1u);
}

TEST_F(MicrophoneRecordingTest, AMicrophoneThatCanNotBeRecordedIsExplainedToTheUser) {
    EXPECT_EQ(failureToPrepare({Item::microphone("nobody")}), "internalError: Can't find audio device: nobody | ");
    EXPECT_FALSE(ZVMicrophone::microphones().empty());
    desktop->now().changeMicrophone("mic", [](VirtualMicrophone& microphone) { microphone.isMute = true; });
    const double askedAt = secondsNow();
    EXPECT_EQ(failureToPrepare({Item::microphone("mic")}),
              "internalError: ZVMicrophone mic has availability: available, provides not sample buffers | "
              "No audio from microphone 'Desk Mic', make sure it's unmuted and powered on.");
    EXPECT_NEAR(secondsNow() - askedAt, 3, 0.1);
    EXPECT_TRUE(log.has(ZVLogLevel::error, "No samples received from microphone, timed out."));
    desktop->now().unplugDevice("mic");
    advance(1);
    EXPECT_EQ(failureToPrepare({Item::microphone("mic")}),
              "internalError: ZVMicrophone mic has availability: notConnected, no AVCaptureDevice | "
              "Can't record microphone 'Desk Mic' because it is not connected anymore.");
    desktop->now().setAccess(ZVPermission::microphone, {.status = AVAuthorizationStatus::denied});
    EXPECT_EQ(failureToPrepare({Item::microphone("mic")}),
              "badOperation: To record audio, microphone access is required. See ZVAuthorizationStatus. | ");
}

TEST_F(MicrophoneRecordingTest, ALateMicrophoneIsWaitedFor) {
    desktop->now().changeMicrophone("mic", [](VirtualMicrophone& microphone) { microphone.isMute = true; });
    desktop->at(2).changeMicrophone("mic", [](VirtualMicrophone& microphone) { microphone.isMute = false; });
    record({Item::microphone("mic")}, 0.5);
    EXPECT_EQ(sound().missing(), 0);
}

TEST_F(MicrophoneRecordingTest, AWriterThatCanNotBeSetUpFailsThePreparation) {
    const std::pair<VirtualWritingConditions, std::string> rows[] = {
        {{.hasAssistant = false}, "internalError: Failed to initialize AVOutputSettingsAssistant. | "},
        {{.hasAudioSettings = false}, "internalError: AVOutputSettingsAssistant didn't provide any audioSettings. | "},
        {{.refusesAudioInput = true}, "internalError: Can't add audio input to asset writer. | "},
    };
    for (const auto& [conditions, expected] : rows) {
        writing->setConditions(conditions);
        EXPECT_EQ(failureToPrepare({Item::microphone("mic")}), expected);
    }
}

TEST_F(MicrophoneRecordingTest, AWriterThatBreaksDownEndsTheRecording) {
    VirtualWritingConditions conditions;
    conditions.breakdown = VirtualBreakdown{1.0, std::make_exception_ptr(ZVError::internalError("The disk is full."))};
    writing->setConditions(conditions);
    std::optional<ZVRecorder::AbortReason::Kind> aborted;
    make({Item::microphone("mic")});
    clock->complete(recorder->setAbortHander([&](const ZVRecorder::AbortReason& reason) { aborted = reason.kind(); }));
    prepare();
    start();
    advance(2);
    EXPECT_EQ(aborted, ZVRecorder::AbortReason::Kind::failed);
    EXPECT_TRUE(log.has(ZVLogLevel::error, "Audio AVAssetWriter reported an error, aborting."));
}

/// What a host was given, and whether it takes more.
struct HostEar {
    bool isReady = true;
    std::vector<CMSampleBuffer> samples;

    ZVSchemaItem item() {
        return ZVSchemaItem::_microphone("mic", [this](const CMSampleBuffer& sample) {
            if (isReady) {
                samples.push_back(sample);
            }
            return isReady;
        });
    }
    bool isContinuous() const {
        for (std::size_t index = 1; index < samples.size(); ++index) {
            const CMSampleBuffer& before = samples[index - 1];
            if (samples[index].presentationTimeStamp() != before.presentationTimeStamp() + before.duration()) {
                return false;
            }
        }
        return true;
    }
};

TEST_F(MicrophoneRecordingTest, AHostGetsAllSamplesInOrderAlsoWhenItRefusesForAWhile) {
    HostEar ear;
    make({ear.item()});
    prepare();
    advance(0.5);
    EXPECT_TRUE(ear.samples.empty());
    start();
    const double startedAt = secondsNow();
    advance(0.2);
    ear.isReady = false;
    const std::size_t taken = ear.samples.size();
    desktop->at(secondsNow() + 0.3).loseMicrophoneSound("mic", 0.2);
    advance(1);
    EXPECT_EQ(ear.samples.size(), taken);
    clock->schedule(clock->now() + std::chrono::milliseconds(500), {}, [&] { ear.isReady = true; });
    const auto result = stop();
    EXPECT_TRUE(ear.isContinuous()) << "with silence in the gap";
    EXPECT_GE(ear.samples.front().presentationTimeStamp().seconds(), hostSeconds(startedAt) - 0.05) << "the held ones";
    EXPECT_LE(ear.samples.front().presentationTimeStamp().seconds(), hostSeconds(startedAt));
    const CMSampleBuffer& last = ear.samples.back();
    EXPECT_GE((last.presentationTimeStamp() + last.duration()).seconds(), hostSeconds(startedAt + 1.2));
    EXPECT_TRUE(result.bundleInfo.files.empty());
    EXPECT_TRUE(log.has(ZVLogLevel::info, "Couldn't flush all frames in buffer at once, retrying a bit."));
}

TEST_F(MicrophoneRecordingTest, SamplesThatPileUpBeforeAHostThatTakesNoneAreNoticed) {
    HostEar ear;
    make({ear.item()});
    prepare();
    start();
    ear.isReady = false;
    advance(11);
    EXPECT_EQ(log.count(ZVLogLevel::warning, "The sample callback takes no samples, they pile up in memory."), 4u)
        << "of 100 a second, at 128, 256, 512 and 1024";
    ear.isReady = true;
    stop();
    EXPECT_GT(ear.samples.size(), 1090u);
}

TEST_F(MicrophoneRecordingTest, ARecorderMayGoAtAnyMomentAndNoSampleComesAfterThat) {
    for (int round = 0; round < 50; ++round) {
        std::atomic<bool> isGone = false;
        std::atomic<int> late = 0;
        make({Item::microphone("mic"), Item::_microphone("mic", [&](const CMSampleBuffer&) {
                  late += isGone;
                  return true;
              })});
        prepare();
        start();
        std::thread owner([&] {
            recorder.reset();
            isGone = true;
        });
        advance(0.05);
        owner.join();
        advance(0.05);
        EXPECT_EQ(late, 0);
    }
}

TEST_F(MicrophoneRecordingTest, AnyThreadMayAskForStatisticsWhileSourcesComeAndGo) {
    make({Item::microphone("mic"), Item::systemAudio()});
    std::atomic<bool> isOver = false;
    std::thread asking([&] {
        while (!isOver) {
            const std::size_t levels = recorder->statistics().soundLevels.size();
            EXPECT_TRUE(levels == 0 || levels == 2) << levels;
        }
    });
    prepare();
    start();
    desktop->at(secondsNow() + 0.2).unplugDevice("mic");
    desktop->at(secondsNow() + 0.4).plugDevice(VirtualDevice::microphone("mic", "Desk Mic"));
    advance(0.6);
    stop();
    isOver = true;
    asking.join();
}

TEST_F(MicrophoneRecordingTest, AHostThatThrowsLosesTheSampleAndNothingElse) {
    int calls = 0;
    record({Item::_microphone("mic",
                              [&calls](const CMSampleBuffer&) -> bool {
                                  ++calls;
                                  throw std::runtime_error("not today");
                              })},
           0.5);
    EXPECT_GT(calls, 45);
    EXPECT_EQ(log.count(ZVLogLevel::error, "The sample callback threw."), 1u) << "of hours of them";
}

TEST_F(MicrophoneRecordingTest, StatisticsTellHowLoudASourceIsNow) {
    for (const auto format : {AVAudioCommonFormat::int16, AVAudioCommonFormat::int32, AVAudioCommonFormat::float32}) {
        plugMicrophone({format, 48000, 2});
        make({Item::microphone("mic"), Item::_microphone("mic", [](const CMSampleBuffer&) { return true; })});
        prepare();
        advance(0.3);
        const auto levels = recorder->statistics().soundLevels;
        ASSERT_EQ(levels.size(), 2u) << "also before the start";
        EXPECT_EQ(levels[0].source, "Microphone");
        EXPECT_EQ(levels[1].name, "Desk Mic");
        EXPECT_NEAR(levels[0].peak, VirtualMicrophone::amplitude, 0.01);
        EXPECT_NEAR(levels[1].rms, VirtualMicrophone::amplitude / std::sqrt(2), 0.01);
        desktop->now().changeMicrophone("mic", [](VirtualMicrophone& microphone) { microphone.isMute = true; });
        advance(0.5);
        EXPECT_EQ(recorder->statistics().soundLevels[0].peak, 0) << "of a source that has fallen silent";
        desktop->now().changeMicrophone("mic", [](VirtualMicrophone& microphone) { microphone.isMute = false; });
    }
}

}  // namespace
}  // namespace zorvane
