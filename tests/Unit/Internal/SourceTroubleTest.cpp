#include "Zorvane/Internal/SourceTrouble.hpp"

#include <gtest/gtest.h>

namespace zorvane {
namespace {

TEST(SourceTrouble, HasAMessageForEachKindOfSourceAndState) {
    const std::string ending = " because id 77 can't be found.";
    const SourceTrouble display = displayNotFound(ending);
    const struct {
        const SourceTrouble& trouble;
        const char* name;
        const char* availability;
        const char* message;
    } cases[] = {
        {microphoneWithoutDevice, "Desk Mic 2", "available",
         "Can't record microphone 'Desk Mic 2', make sure it's unmuted and powered on."},
        {microphoneWithoutDevice, "Built-in Microphone", "unknownSuspended",
         "Can't record 'Built-in Microphone' because it is suspended."},
        {microphoneWithoutDevice, "Desk Mic 2", "lidClosed",
         "Can't record microphone 'Desk Mic 2' because MacBook lid is closed."},
        {microphoneWithoutDevice, "Desk Mic 2", "notConnected",
         "Can't record microphone 'Desk Mic 2' because it is not connected anymore."},
        {microphoneWithoutSamples, "MICROPHONE", "available",
         "No audio from 'MICROPHONE', make sure it's unmuted and powered on."},
        {microphoneWithoutSamples, "Desk", "available",
         "No audio from microphone 'Desk', make sure it's unmuted and powered on."},
        {microphoneWithoutSamples, "Desk", "unknownSuspended",
         "Can't record microphone 'Desk' because it is suspended."},
        {cameraWithoutDevice, "Brio", "available",
         "Can't record camera 'Brio', make sure it's powered on and any privacy shutter is open."},
        {cameraWithoutDevice, "FaceTime HD Camera", "lidClosed",
         "Can't record 'FaceTime HD Camera' because MacBook lid is closed."},
        {cameraWithoutSamples, "Brio", "available",
         "No video from camera 'Brio', make sure it's powered on and any privacy shutter is open."},
        {cameraWithoutSamples, "My camera", "available",
         "No video from 'My camera', make sure it's powered on and any privacy shutter is open."},
        {cameraWithoutSamples, "Brio", "notConnected",
         "Can't record camera 'Brio' because it is not connected anymore."},
        {appleDeviceWithoutDevice, "Ann's iPhone", "notConnected",
         "Can't record 'Ann's iPhone' because it is not connected anymore."},
        {appleDeviceWithoutDevice, "Ann's iPad", "notConnected",
         "Can't record device 'Ann's iPad' because it is not connected anymore."},
        {appleDeviceWithoutDevice, "Ann's iPhone", "notPaired",
         "Can't record 'Ann's iPhone', make sure device is unlocked."},
        {appleDeviceWithoutDevice, "Ann's iPad", "available",
         "Can't record device 'Ann's iPad', make device is unlocked."},
        {appleDeviceWithoutSamples, "Ann's iPhone", "pairedNeedsConnect",
         "No video from 'Ann's iPhone', make sure device is unlocked."},
        {appleDeviceWithoutSamples, "Ann's iPad", "pairedNeedsReconnect",
         "No video from camera 'Ann's iPad', make device is unlocked."},
        {appleDeviceWithoutSamples, "Ann's iPad", "notConnected",
         "Can't record device 'Ann's iPad' because it is not connected anymore."},
        {display, "Studio Display", "available", "Can't record 'Studio Display' because id 77 can't be found."},
        {display, "U2720Q", "available", "Can't record display 'U2720Q' because id 77 can't be found."},
        {display, "U2720Q", "lidClosed", "Can't record display 'U2720Q' because MacBook lid is closed."},
        {display, "Studio DISPLAY", "notConnected",
         "Can't record 'Studio DISPLAY' because it is not connected anymore."},
    };
    for (const auto& expected : cases) {
        EXPECT_EQ(userMessage(expected.trouble, expected.name, expected.availability), expected.message);
    }
}

TEST(SourceTrouble, DescribesItselfToDevelopers) {
    EXPECT_EQ(debugDescription(microphoneWithoutDevice, "mic", "lidClosed"),
              "ZVMicrophone mic has availability: lidClosed, no AVCaptureDevice");
    EXPECT_EQ(debugDescription(cameraWithoutSamples, "cam", "available"),
              "ZVCamera cam has availability: available, provides not sample buffers");
    EXPECT_EQ(debugDescription(appleDeviceWithoutSamples, "phone", "notPaired"),
              "ZVAppleDevice phone has availability: notPaired, provides not sample buffers");
    EXPECT_EQ(debugDescription(displayNotFound(""), "77", "available"), "ZVDisplay 77 has availability: available");
    EXPECT_EQ(debugDescription(windowNotFound, "5", "closed"), "ZVWindow 5 has availability: closed");
}

TEST(SourceTrouble, NamesAWindowByItsTitleElseItsApplicationElseNotAtAll) {
    using Text = std::optional<std::string>;
    const struct {
        Text title;
        Text application;
        const char* availability;
        const char* message;
    } cases[] = {
        {"Notes", "Editor", "available", "Can't record 'Notes' because windowID 9 can't be found."},
        {"", "Editor", "available", "Can't record 'Editor' because windowID 9 can't be found."},
        {{}, "", "available", "Can't record window because windowID 9 can't be found."},
        {"Notes", {}, "notOnScreen", "Can't record 'Notes' because it is not on screen."},
        {{}, "Editor", "notOnScreen", "Can't record 'Editor' window because it is not on screen."},
        {{}, {}, "notOnScreen", "Can't record window because it is not on screen."},
        {"Notes", "Editor", "closed", "Can't record 'Notes' because the window has been closed."},
        {"", "Editor", "closed", "Can't record 'Editor' window because it has been closed."},
        {"", "", "closed", "Can't record window because it has been closed."},
    };
    for (const auto& expected : cases) {
        EXPECT_EQ(windowMessage(9, expected.title, expected.application, expected.availability), expected.message);
    }
}

}  // namespace
}  // namespace zorvane
