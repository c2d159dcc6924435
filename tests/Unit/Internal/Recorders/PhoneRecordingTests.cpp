#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

#include "Zorvane/Sources/ZVAppleDevice.hpp"
#include "tests/Support/CameraRecording.hpp"

namespace zorvane {
namespace {

using ::testing::ElementsAre;
using Item = ZVSchemaItem;

/// Recordings of a phone that the library has seen, as a host must have to know its id.
class PhoneRecordingTest : public testing::CameraRecordingTest {
  protected:
    PhoneRecordingTest() { EXPECT_EQ(clock->complete(ZVAppleDevice::appleDevices()).size(), 1u); }

    static std::vector<ZVSchemaItem> phone() { return {Item::appleDeviceStaticOrientation("phone", "phone.mov")}; }
    CMVideoDimensions size() const { return {videoSettings().width, videoSettings().height}; }
};

TEST_F(PhoneRecordingTest, TheOutputHasTheSizeOfTheFirstPictureHoweverTheDeviceIsTurned) {
    const CMVideoDimensions upright = VirtualDevice::phone("", "").pictureSize;
    make(phone());
    EXPECT_TRUE(recorder->statistics().soundLevels.empty()) << "it isn't known yet";
    prepare();
    advance(0.5);
    EXPECT_EQ(recorder->statistics().soundLevels.at(0).name, "Anna");
    start();
    desktop->at(secondsNow() + 1).turnCamera("phone");
    advance(2);
    const auto result = stop();
    EXPECT_EQ(size(), upright);
    EXPECT_EQ(videoSettings().colorProperties, std::nullopt);
    expectInPlace(pictures(), 2);
    EXPECT_EQ(pictures().front().size, upright);
    EXPECT_EQ(pictures().back().size, (CMVideoDimensions{upright.height, upright.width}));
    EXPECT_EQ(sound().missing(), 0);
    expectInPlace(sound(), 0, 2);
    EXPECT_EQ(result.bundleInfo.files.at(0).type, ZVBundleInfo::FileAssetType::appleDevice);
    EXPECT_EQ(result.bundleInfo.files[0].filename, "phone.mov");
}

TEST_F(PhoneRecordingTest, SoundThatComesBeforeTheFirstPictureIsHeldUntilTheOutputIsThere) {
    cover("phone", true);
    desktop->at(secondsNow() + 2).changeCamera("phone", [](VirtualCamera& camera) { camera.isCovered = false; });
    make(phone());
    prepare();
    start();
    advance(1);
    stop();
    EXPECT_EQ(sound().missing(), 0);
    expectInPlace(sound(), 0, 1);
    const auto held = movie().tracks.at(0).samples.front().presentationTimeStamp;
    EXPECT_GT((held - *movie().sessionStart).seconds(), -0.05) << "no more than three blocks";
    expectInPlace(pictures(), 1);
}

TEST_F(PhoneRecordingTest, ThePictureThatThePreparationHasWaitedForOpensTheMovieIfNoOtherComes) {
    desktop->now().changeCamera("phone", [](VirtualCamera& camera) { camera.framesPerSecond = 0.5; });
    make(phone());
    prepare();
    cover("phone", true);
    start();
    advance(1);
    stop();
    ASSERT_EQ(pictures().size(), 2u);
    EXPECT_NEAR(pictures()[1].shown, 1, 1e-6);
}

TEST_F(PhoneRecordingTest, AnUnpluggedPhoneLeavesSilenceAndItsLastPicture) {
    make(phone());
    prepare();
    start();
    desktop->at(secondsNow() + 1).unplugDevice("phone");
    advance(3);
    stop();
    EXPECT_THAT(notices(), ElementsAre("interrupted Anna for a reason"));
    EXPECT_NEAR(sound().duration(), 3, 0.001);
    expectInPlace(sound(), 0, 0.97);
    EXPECT_NEAR(pictures().back().shown, 3, 1e-6);
    EXPECT_NEAR(pictures().back().taken, 1, 0.04);
}

TEST_F(PhoneRecordingTest, ALockedPhoneFailsAfterThreeSecondsAndOneThatHasGoneSaysSo) {
    cover("phone", true);
    const double askedAt = secondsNow();
    EXPECT_EQ(failureToPrepare(phone()),
              "internalError: Timeout waiting for first sample from Apple Device. | "
              "No video data from Apple Device. Make sure device is unlocked.");
    EXPECT_NEAR(secondsNow() - askedAt, 3, 0.1);
    desktop->at(secondsNow() + 1).unplugDevice("phone");
    EXPECT_EQ(failureToPrepare(phone()),
              "internalError: ZVAppleDevice phone has availability: notConnected, provides not sample buffers | "
              "Can't record device 'Anna' because it is not connected anymore.");
}

TEST_F(PhoneRecordingTest, APhoneThatCanNotBeRecordedSaysWhy) {
    using Part = VirtualSessionRefusal::Part;
    const auto refuse = [this](Part part, AVMediaType media) {
        return [this, part, media] { desktop->now().refuseInCapture(VirtualSessionRefusal{part, media}); };
    };
    const struct {
        std::function<void()> script;
        std::string expected;
    } rows[] = {
        {[this] { desktop->now().occupyDevice("phone"); },
         "badOperation: Can't find device: phone | Another program is using “Anna”."},
        {[this] {
             desktop->now().freeDevice("phone").changeCamera(
                 "phone", [](VirtualCamera& camera) { camera.describesPictures = false; });
         },
         "internalError: Missing formatDescription in first sample buffer. | "},
        {refuse(Part::input, AVMediaType::muxed), "internalError: Can't add deviceInput to session | "},
        {refuse(Part::output, AVMediaType::audio), "internalError: Can't add audioOutput to session | "},
        {refuse(Part::connection, AVMediaType::video), "internalError: Can't find enabled video connection. | "},
        {[this] { desktop->now().setAccess(ZVPermission::camera, {.status = AVAuthorizationStatus::denied}); },
         "badOperation: To record video, camera access is required. See ZVAuthorizationStatus. | "},
    };
    EXPECT_EQ(failureToPrepare({Item::appleDeviceStaticOrientation("nobody")}),
              "badOperation: Can't find device: nobody | ");
    for (const auto& row : rows) {
        row.script();
        EXPECT_EQ(failureToPrepare(phone()), row.expected);
    }
}

}  // namespace
}  // namespace zorvane
