#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>

#include "Zorvane/Internal/Recorders/MediaOutput.hpp"
#include "tests/Support/CameraRecording.hpp"

namespace zorvane {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using Item = ZVSchemaItem;
using Part = VirtualSessionRefusal::Part;

constexpr double oneMillisecond = 0.001;

class WebcamRecordingTest : public testing::CameraRecordingTest {
  protected:
    static std::vector<ZVSchemaItem> webcam() { return {Item::webcam("mic", "cam")}; }
};

TEST_F(WebcamRecordingTest, AMovieHasThePicturesAndTheSoundOfEachMomentFromTheStartToTheStop) {
    const auto late = std::chrono::milliseconds(60);
    desktop->now().changeCamera("cam", [&](VirtualCamera& camera) { camera.latency = late; });
    desktop->now().changeMicrophone("mic", [&](VirtualMicrophone& microphone) { microphone.latency = late; });
    const auto result = record({Item::webcam("mic", "cam", "me.mov")}, 2.0);
    expectInPlace(pictures(), 2.0);
    const testing::RecordedSound sound = this->sound();
    EXPECT_NEAR(sound.duration(), 2, oneMillisecond);
    EXPECT_EQ(sound.missing(), 0);
    expectInPlace(sound, 0, 2);
    const auto statistics = recorder->statistics();
    EXPECT_NEAR(movie().sessionStart->seconds(), statistics.recordFrom, 1e-6);
    EXPECT_NEAR(movie().sessionEnd->seconds(), statistics.recordUntil, 1e-6);
    EXPECT_EQ(statistics.framesWritten, pictures().size() - 1) << "the closing picture isn't shown";
    EXPECT_EQ(statistics.framesDropped, 0u);
    EXPECT_EQ(videoSettings().colorProperties, std::nullopt) << "those of the camera";
    EXPECT_FALSE(videoSettings().compressionProperties.allowFrameReordering);
    ASSERT_EQ(result.bundleInfo.files.size(), 1u);
    EXPECT_EQ(result.bundleInfo.files[0].type, ZVBundleInfo::FileAssetType::webcam);
    EXPECT_EQ(result.bundleInfo.files[0].filename, "me.mov");
    EXPECT_TRUE(log.has(ZVLogLevel::debug, "Finished."));
}

TEST_F(WebcamRecordingTest, TwoRecordersOfOneCameraSeeTheSame) {
    record({Item::webcam("mic", "cam", "a.mov"), Item::webcam("mic", "cam", "b.mov"), Item::microphone("mic")}, 1.5);
    std::size_t webcams = 0;
    for (const std::size_t writer : {0u, 1u, 2u}) {  // made in any order
        EXPECT_NEAR((*movie(writer).sessionEnd - *movie(writer).sessionStart).seconds(), 1.5, 1e-6);
        expectInPlace(sound(writer), 0, 1.5);
        if (movie(writer).tracks.size() > 1) {
            expectInPlace(pictures(writer), 1.5);
            ++webcams;
        }
    }
    EXPECT_EQ(webcams, 2u);
}

TEST_F(WebcamRecordingTest, SegmentsSpanTheRecordingAndTheMasterPlaylistNamesThem) {
    const TemporaryDirectory bundle;
    recorder.emplace(std::vector{Item::webcam(
                         "mic", "cam", ZVWebcamOutputOptions::segmented(ZVSegmentedOutput{.filenamePrefix = "me"}))},
                     bundle.path() / "bundle");
    prepare();
    advance(0.5);
    start();
    advance(7.25);
    EXPECT_TRUE(stop().bundleInfo.files.empty());
    EXPECT_EQ(movie(1).sessionStart, kCMTimeZero);
    expectInPlace(pictures(1, 0), 7.25);
    expectInPlace(sound(0), 0, 7.25);
    std::ifstream file(bundle.path() / "bundle" / "me.m3u8");
    const std::string master{std::istreambuf_iterator<char>(file), {}};
    EXPECT_THAT(master, HasSubstr("NAME=\"Microphone\",DEFAULT=YES,AUTOSELECT=YES,CHANNELS=\"1\""));
    EXPECT_THAT(master, HasSubstr("CODECS=\"avc1.42e00a,mp4a.40.2\""));
    EXPECT_EQ(withPictures({}, {}, "Camera").videoResolution, (CMVideoDimensions{1920, 1080}));
}

TEST_F(WebcamRecordingTest, WhatADeviceDoesNotTellOrThePresetExceedsIsWarnedOfOnce) {
    plugMicrophone({AVAudioCommonFormat::float32, 48000, 6});
    desktop->now().changeCamera("cam", [](VirtualCamera& camera) { camera.minFrameDuration = kCMTimeInvalid; });
    record(webcam(), 1.0);
    expectInPlace(pictures(), 1.0);
    EXPECT_EQ(movie().tracks.at(0).audioSettings->numberOfChannels, 2);
    for (const char* warning : {"More than 2 audio channels is not supported, limitting output settings to 2 channels.",
                                "Non numeric activeVideoMinFrameDuration, will not set sourceVideoMinFrameDuration."}) {
        EXPECT_EQ(log.count(ZVLogLevel::warning, warning), 1u) << warning;
    }
    writing->setConditions({.audioChannels = std::nullopt});
    record(webcam(), 0.1);
    EXPECT_EQ(movie(1).tracks.at(0).audioSettings->numberOfChannels, std::nullopt) << "the settings stay as they are";
}

TEST_F(WebcamRecordingTest, AnUnpluggedCameraLeavesItsLastPictureAndIsTakenUpAgain) {
    make(webcam());
    prepare();
    start();
    const double startedAt = secondsNow();
    desktop->at(startedAt + 1).unplugDevice("cam");
    desktop->at(startedAt + 3).plugDevice(VirtualDevice::camera("cam", "Desk Camera"));
    advance(4);
    EXPECT_THAT(notices(), ElementsAre("interrupted Desk Camera for a reason", "resumed Desk Camera"));
    desktop->now().unplugDevice("cam");
    advance(1);
    const double stoppedAt = secondsNow();
    stop();
    EXPECT_NEAR(secondsNow() - stoppedAt, 0.25, 0.01) << "what a dead camera costs the stop";
    const auto seen = pictures();
    EXPECT_NEAR(seen.back().shown, 5, 1e-6);
    EXPECT_NEAR(seen.back().taken, 4, 0.04);
    for (std::size_t index = 1; index < seen.size() - 1; ++index) {
        EXPECT_NEAR(seen[index].shown, seen[index].taken, 0.0012);
        EXPECT_FALSE(seen[index].shown > 1.01 && seen[index].shown < 2.99) << seen[index].shown;
    }
    EXPECT_NEAR(static_cast<double>(seen.size()), 2 * 30 + 2, 3);
    EXPECT_EQ(sound().missing(), 0);
    expectInPlace(sound(), 0, 5);
    EXPECT_TRUE(
        log.has(ZVLogLevel::warning, "Source of pictures was interrupted, its last picture lasts until it resumes."));
}

TEST_F(WebcamRecordingTest, AnUnpluggedMicrophoneLeavesSilenceBesideThePictures) {
    make(webcam());
    prepare();
    start();
    desktop->at(secondsNow() + 1).unplugDevice("mic");
    advance(2);
    stop();
    EXPECT_THAT(notices(), ElementsAre("interrupted Desk Mic for a reason"));
    expectInPlace(pictures(), 2.0);
    EXPECT_NEAR(sound().duration(), 2, oneMillisecond);
    expectInPlace(sound(), 0, 0.97);
}

TEST_F(WebcamRecordingTest, ACameraThatGivesNothingAfterTheStartLeavesOnePictureForTheWholeLength) {
    make(webcam());
    prepare();
    advance(0.5);
    cover("cam", true);
    advance(0.5);
    start();
    advance(2);
    stop();
    const auto seen = pictures();
    ASSERT_EQ(seen.size(), 2u);
    EXPECT_NEAR(seen[0].shown, 0, 1e-6);
    EXPECT_NEAR(seen[1].shown, 2, 1e-6);
    EXPECT_NEAR(seen[0].taken, -0.5, 0.04);
    expectInPlace(sound(), 0, 2);
}

TEST_F(WebcamRecordingTest, ASessionWithoutAClockOrWithAnotherOneIsPlacedOnTheHostClock) {
    const std::optional<double> clocks[] = {std::nullopt, 5.00001};
    for (std::size_t index = 0; index < std::size(clocks); ++index) {
        desktop->now().setCaptureClock(clocks[index]);
        record(webcam(), 1);
        expectInPlace(pictures(index), 1);
    }
    EXPECT_EQ(log.count(ZVLogLevel::warning,
                        "AVCaptureSession has no synchronization clock, falling back to host time clock polling."),
              1u);
}

TEST_F(WebcamRecordingTest, PicturesThatGoBackInTimeEndTheRecording) {
    std::optional<ZVRecorder::AbortReason::Kind> aborted;
    make(webcam());
    clock->complete(recorder->setAbortHander([&](const ZVRecorder::AbortReason& reason) { aborted = reason.kind(); }));
    prepare();
    start();
    advance(1);
    desktop->now().changeCamera("cam", [](VirtualCamera& camera) { camera.jitter = std::chrono::milliseconds(300); });
    advance(2);
    EXPECT_EQ(aborted, ZVRecorder::AbortReason::Kind::interrupted);
    EXPECT_TRUE(log.has(ZVLogLevel::error, "Failed to append video frame, aborting."));
}

TEST_F(WebcamRecordingTest, ASilentDeviceIsExplainedToTheUserAfterThreeSeconds) {
    const auto seconds = [this](const std::string& expected) {
        const double askedAt = secondsNow();
        EXPECT_EQ(failureToPrepare(webcam()), expected);
        return secondsNow() - askedAt;
    };
    cover("cam", true);
    EXPECT_NEAR(seconds("internalError: ZVCamera cam has availability: available, provides not sample buffers | "
                        "No video from 'Desk Camera', make sure it's powered on and any privacy shutter is open."),
                3, 0.1);
    EXPECT_TRUE(log.has(ZVLogLevel::error, "No samples received from camera, timed out."));
    desktop->now().changeMicrophone("mic", [](VirtualMicrophone& microphone) { microphone.isMute = true; });
    EXPECT_NEAR(seconds("internalError: ZVMicrophone mic has availability: available, provides not sample buffers | "
                        "No audio from microphone 'Desk Mic', make sure it's unmuted and powered on."),
                3, 0.1)
        << "the camera isn't waited for";
}

TEST_F(WebcamRecordingTest, AWebcamThatCanNotBeRecordedSaysWhy) {
    const auto nothing = [] {};
    const auto refuse = [this](Part part, AVMediaType media) {
        return [this, part, media] { desktop->now().refuseInCapture(VirtualSessionRefusal{part, media}); };
    };
    const auto access = [this](bool audio, bool video) {
        return [this, audio, video] {
            const auto status = [](bool allowed) {
                return VirtualAccess{.status =
                                         allowed ? AVAuthorizationStatus::authorized : AVAuthorizationStatus::denied};
            };
            desktop->now().setAccess(ZVPermission::microphone, status(audio));
            desktop->now().setAccess(ZVPermission::camera, status(video));
        };
    };
    const struct {
        std::function<void()> script;
        std::string microphoneID;
        std::string cameraID;
        std::string expected;
    } rows[] = {
        {nothing, "nobody", "cam", "badOperation: Can't find audio device: nobody | "},
        {nothing, "mic", "nobody", "badOperation: Can't find video device: nobody | "},
        {[this] { desktop->now().occupyDevice("cam"); }, "mic", "cam",
         "badOperation: Can't find video device: cam | Another program is using “Desk Camera”."},
        {[this] { desktop->now().freeDevice("cam"); }, "mic", "cam", "prepared"},
        {refuse(Part::input, AVMediaType::audio), "mic", "cam", "internalError: Can't add audioInput to session | "},
        {refuse(Part::input, AVMediaType::video), "mic", "cam", "internalError: Can't add videoInput to session | "},
        {refuse(Part::output, AVMediaType::audio), "mic", "cam", "internalError: Can't add audioOutput to session | "},
        {refuse(Part::output, AVMediaType::video), "mic", "cam", "internalError: Can't add videoOutput to session | "},
        {refuse(Part::connection, AVMediaType::audio), "mic", "cam",
         "internalError: Can't find enabled audio connection. | "},
        {refuse(Part::connection, AVMediaType::video), "mic", "cam",
         "internalError: Can't find enabled video connection. | "},
        {access(false, true), "mic", "cam",
         "badOperation: To record audio, microphone access is required. See ZVAuthorizationStatus. | "},
        {access(true, false), "mic", "cam",
         "badOperation: To record video, camera access is required. See ZVAuthorizationStatus. | "},
        {access(false, false), "mic", "cam",
         "badOperation: To record video and audio, both camera and microphone access is required. "
         "See ZVAuthorizationStatus. | "},
    };
    for (const auto& row : rows) {
        row.script();
        EXPECT_EQ(failureToPrepare({Item::webcam(row.microphoneID, row.cameraID)}), row.expected);
    }
    EXPECT_TRUE(log.has(ZVLogLevel::error, "Failed to add videoOutput to session."));
    EXPECT_TRUE(log.has(ZVLogLevel::error,
                        "Missing required video and audio recording permissions. See ZVAuthorizationStatus."));
}

}  // namespace
}  // namespace zorvane
