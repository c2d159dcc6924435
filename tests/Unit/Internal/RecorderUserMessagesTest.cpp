#include "Zorvane/Internal/RecorderUserMessages.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <optional>

#include "Zorvane/Internal/Discovery/WindowDiscovery.hpp"
#include "Zorvane/Sources/ZVDisplay.hpp"
#include "Zorvane/ZVError.hpp"
#include "tests/Unit/Internal/Discovery/DeviceWorld.hpp"

namespace zorvane {
namespace {

using Moment = const VirtualMoment&;
using Level = ZVLogLevel;

class RecorderUserMessagesTest : public testing::DeviceWorldTest {
  protected:
    /// What was thrown, if anything.
    static std::optional<ZVError> errorOf(const std::function<void()>& action) {
        try {
            action();
        } catch (const ZVError& error) {
            return error;
        }
        return std::nullopt;
    }

    std::size_t errorLines() const {
        std::size_t lines = 0;
        for (const auto& message : log.messages()) {
            lines += message.level == Level::error ? 1 : 0;
        }
        return lines;
    }

    const Logger logger = log.logger<RecorderUserMessagesTest>();
};

TEST_F(RecorderUserMessagesTest, LeaveAnUnknownSourceToTheCaller) {
    throwMicrophoneNoAVCaptureDevice("nobody", logger);
    throwMicrophoneNoSampleBuffers("nobody", logger);
    throwCameraNoAVCaptureDevice("nobody", logger);
    throwCameraNoSampleBuffers("nobody", logger);
    throwAppleDeviceNoAVCaptureDevice("nobody", logger);
    throwAppleDeviceNoSampleBuffers("nobody", logger);
    throwCantFindDisplay(12345, logger);
    throwCantFindWindow(12345, logger);
    EXPECT_EQ(errorLines(), 0U);
}

TEST_F(RecorderUserMessagesTest, ExplainADeviceByItsNameAndState) {
    happen([](Moment now) {
        now.plugDevice(VirtualDevice::camera("cam", "Brio")).plugDevice(VirtualDevice::microphone("mic", "Desk Mic 2"));
    });
    const struct {
        std::function<void()> explain;
        const char* line;
        const char* metadataKey;
        const char* description;
        const char* message;
    } cases[] = {
        {[&] { throwMicrophoneNoAVCaptureDevice("mic", logger); }, "Found in MicrophoneDiscovery as ZVMicrophone.",
         "ZVMicrophone.availability", "internalError: ZVMicrophone mic has availability: available, no AVCaptureDevice",
         "Can't record microphone 'Desk Mic 2', make sure it's unmuted and powered on."},
        {[&] { throwMicrophoneNoSampleBuffers("mic", logger); }, "No samples received from microphone, timed out.",
         "ZVMicrophone.availability",
         "internalError: ZVMicrophone mic has availability: available, provides not sample buffers",
         "No audio from microphone 'Desk Mic 2', make sure it's unmuted and powered on."},
        {[&] { throwCameraNoAVCaptureDevice("cam", logger); }, "Found in CameraDiscovery as ZVCamera.",
         "ZVCamera.availability", "internalError: ZVCamera cam has availability: available, no AVCaptureDevice",
         "Can't record camera 'Brio', make sure it's powered on and any privacy shutter is open."},
        {[&] { throwCameraNoSampleBuffers("cam", logger); }, "No samples received from camera, timed out.",
         "ZVCamera.availability",
         "internalError: ZVCamera cam has availability: available, provides not sample buffers",
         "No video from camera 'Brio', make sure it's powered on and any privacy shutter is open."},
    };
    for (const auto& expected : cases) {
        const auto error = errorOf(expected.explain);
        ASSERT_TRUE(error) << expected.line;
        EXPECT_EQ(error->errorGroup(), expected.description);
        EXPECT_EQ(error->userMessage(), expected.message);
        EXPECT_TRUE(log.has(Level::error, expected.line, {{expected.metadataKey, "available"}}));
    }
    EXPECT_EQ(errorLines(), std::size(cases)) << "one line each";
}

TEST_F(RecorderUserMessagesTest, RememberADeviceThatWasUnplugged) {
    happen([](Moment now) { now.plugDevice(VirtualDevice::camera("cam", "Desk Camera")); });
    EXPECT_TRUE(errorOf([&] { throwCameraNoAVCaptureDevice("cam", logger); }));
    happen([](Moment now) { now.unplugDevice("cam"); });
    const auto error = errorOf([&] { throwCameraNoAVCaptureDevice("cam", logger); });
    ASSERT_TRUE(error);
    EXPECT_EQ(error->userMessage(), "Can't record 'Desk Camera' because it is not connected anymore.");
}

TEST_F(RecorderUserMessagesTest, ExplainADisplayThatWentAway) {
    ASSERT_EQ(ZVDisplay::displays().size(), 1U);
    happen([](Moment now) { now.removeDisplay(1); });
    const auto error = errorOf([&] { throwCantFindDisplay(77, logger); });
    ASSERT_TRUE(error);
    EXPECT_EQ(error->errorGroup(), "internalError: ZVDisplay 77 has availability: notConnected");
    EXPECT_EQ(error->userMessage(), "Can't record 'Virtual Display' because it is not connected anymore.");
    EXPECT_TRUE(log.has(Level::error, "Can't find display for given ID. But there's a ZVDisplay.",
                        {{"displaySerialNumber", "77"}, {"ZVDisplay.availability", "notConnected"}}));
}

TEST_F(RecorderUserMessagesTest, ExplainAWindowThatWasClosed) {
    VirtualWindow window;
    window.window = {.windowID = 9, .frame = CGRect::make(0, 0, 10, 10), .title = "Notes", .isOnScreen = true};
    happen([&](Moment now) { now.setWindows({window}); });
    ASSERT_NE(WindowDiscovery::shared()->find(9), nullptr);
    EXPECT_EQ(errorOf([&] { throwCantFindWindow(9, logger); })->userMessage(),
              "Can't record 'Notes' because windowID 9 can't be found.");

    happen([](Moment now) { now.setWindows({}); });
    advance(0.3);
    const auto error = errorOf([&] { throwCantFindWindow(9, logger); });
    ASSERT_TRUE(error);
    EXPECT_EQ(error->errorGroup(), "internalError: ZVWindow 9 has availability: closed");
    EXPECT_EQ(error->userMessage(), "Can't record 'Notes' because the window has been closed.");
    EXPECT_TRUE(log.has(Level::error, "Can't find display for given ID. But there's a ZVWindow.",
                        {{"windowID", "9"}, {"ZVWindow.availability", "closed"}}));
}

}  // namespace
}  // namespace zorvane
