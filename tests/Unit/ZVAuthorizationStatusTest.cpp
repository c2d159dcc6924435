#include "Zorvane/ZVAuthorizationStatus.hpp"

#include <gtest/gtest.h>

#include "Zorvane/Internal/Concurrency/Activity.hpp"
#include "Zorvane/Internal/Concurrency/TaskHandle.hpp"
#include "tests/Support/LogCapture.hpp"
#include "tests/Support/VirtualWorld.hpp"

namespace zorvane {
namespace {

using Status = AVAuthorizationStatus;

class AuthorizationStatusTest : public testing::VirtualWorldTest {
  protected:
    void set(ZVPermission permission, VirtualAccess access) { desktop->now().setAccess(permission, access); }
};

TEST_F(AuthorizationStatusTest, TellsEachPermissionByItself) {
    set(ZVPermission::camera, {.status = Status::denied});
    set(ZVPermission::microphone, {.status = Status::restricted});
    set(ZVPermission::inputMonitoring, {.status = Status::notDetermined});
    set(ZVPermission::accessibilityControl, {.status = Status::denied});
    EXPECT_EQ(ZVAuthorizationStatus::camera(), Status::denied);
    EXPECT_EQ(ZVAuthorizationStatus::microphone(), Status::restricted);
    EXPECT_TRUE(ZVAuthorizationStatus::screenRecording());
    EXPECT_FALSE(ZVAuthorizationStatus::inputMonitoring()) << "not yet asked is not allowed";
    EXPECT_FALSE(ZVAuthorizationStatus::accessibilityControl());

    set(ZVPermission::accessibilityControl, {});
    EXPECT_TRUE(ZVAuthorizationStatus::accessibilityControl());
}

TEST_F(AuthorizationStatusTest, SystemAudioFollowsTheScreenWhateverElseIsSo) {
    for (const Status ofAudio : {Status::authorized, Status::denied}) {
        set(ZVPermission::systemAudioRecording, {.status = ofAudio});
        for (const bool isAllowed : {true, false}) {
            desktop->now().allowScreenCapture(isAllowed);
            EXPECT_EQ(ZVAuthorizationStatus::systemAudioRecording(), isAllowed);
            EXPECT_EQ(ZVAuthorizationStatus::requestSystemAudioRecording(), isAllowed);
        }
    }
}

TEST_F(AuthorizationStatusTest, ARequestForADeviceWaitsForTheUsersAnswer) {
    for (const bool allows : {true, false}) {
        set(ZVPermission::camera, {.status = Status::notDetermined, .userAllows = allows, .secondsToAnswer = 3});
        const auto request = spawn(ZVAuthorizationStatus::requestCameraAccess());
        Activity::waitUntilIdle();
        advance(2.9);
        EXPECT_EQ(ZVAuthorizationStatus::camera(), Status::notDetermined);
        advance(0.2);
        EXPECT_EQ(request.value().get(), allows);
        EXPECT_EQ(ZVAuthorizationStatus::camera(), allows ? Status::authorized : Status::denied);
        EXPECT_EQ(ZVAuthorizationStatus::requestCameraAccess().get(), allows) << "nobody is asked twice";
    }
}

TEST_F(AuthorizationStatusTest, AWaitForAnAnswerCanBeCancelled) {
    set(ZVPermission::microphone, {.status = Status::notDetermined, .secondsToAnswer = 3});
    const auto request = spawn(ZVAuthorizationStatus::requestMicrophoneAccess());
    Activity::waitUntilIdle();
    request.cancel();
    EXPECT_THROW(request.value().get(), ZVCancelled);
    advance(4);
    EXPECT_EQ(ZVAuthorizationStatus::microphone(), Status::authorized);
}

TEST_F(AuthorizationStatusTest, OtherRequestsReturnWhatIsAllowedBeforeTheAnswer) {
    set(ZVPermission::screenRecording, {.status = Status::notDetermined, .secondsToAnswer = 1});
    EXPECT_FALSE(ZVAuthorizationStatus::requestScreenRecording());
    advance(1.1);
    EXPECT_TRUE(ZVAuthorizationStatus::requestScreenRecording());
    set(ZVPermission::inputMonitoring, {.status = Status::denied});
    EXPECT_FALSE(ZVAuthorizationStatus::requestInputMonitoring());
    EXPECT_TRUE(ZVAuthorizationStatus::requestAccessibilityControl());
}

TEST_F(AuthorizationStatusTest, AMissingUsageDescriptionIsLoggedAndTheRequestGoesOn) {
    const LogCapture log(ZVLogger::shared());
    const std::string forCamera =
        "Missing camera usage description, cannot request camera access.\n"
        "Add NSCameraUsageDescription key in Info.plist";
    const std::string forMicrophone =
        "Missing microphone usage description, cannot request microphone access.\n"
        "Add NSMicrophoneUsageDescription key in Info.plist";
    EXPECT_TRUE(ZVAuthorizationStatus::requestCameraAccess().get());
    EXPECT_FALSE(log.has(ZVLogLevel::error, forCamera));

    set(ZVPermission::camera, {.status = Status::notDetermined, .hasUsageDescription = false});
    set(ZVPermission::microphone, {.status = Status::denied, .hasUsageDescription = false});
    EXPECT_TRUE(ZVAuthorizationStatus::requestCameraAccess().get());
    EXPECT_FALSE(ZVAuthorizationStatus::requestMicrophoneAccess().get());
    EXPECT_TRUE(log.has(ZVLogLevel::error, forCamera));
    EXPECT_TRUE(log.has(ZVLogLevel::error, forMicrophone));
}

}  // namespace
}  // namespace zorvane
