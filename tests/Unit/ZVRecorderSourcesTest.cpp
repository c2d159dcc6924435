#include "Zorvane/ZVRecorder.hpp"
#include "tests/Support/VirtualWindows.hpp"
#include "tests/Support/VirtualWorld.hpp"

#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

namespace zorvane {
namespace {

class ZVRecorderSourcesTest : public testing::VirtualWorldTest {};

TEST_F(ZVRecorderSourcesTest, TheFormerNamesGiveTheObjectsOfTheListsOfSources) {
    desktop->now()
        .setWindows({testing::window(1), testing::window(2, std::nullopt)})
        .setApplications({testing::someApplication})
        .plugDevice(VirtualDevice::camera("camera", "Camera"))
        .plugDevice(VirtualDevice::microphone("microphone", "Microphone"))
        .plugDevice(VirtualDevice::phone("phone", "Phone"));
    using WindowOptions = ZVWindow::FilterOptions;
    EXPECT_EQ(ZVRecorder::getDisplays(), ZVDisplay::displays());
    EXPECT_EQ(ZVRecorder::getWindows(WindowOptions::default_).size(), 1U);
    EXPECT_EQ(ZVRecorder::getWindows(WindowOptions::onlyOnScreen), ZVWindow::windows(WindowOptions::onlyOnScreen));
    EXPECT_EQ(ZVRecorder::getApplications(), ZVRunningApplication::applications());
    EXPECT_EQ(ZVRecorder::getCameras(), ZVCamera::cameras());
    EXPECT_EQ(ZVRecorder::getMicrophones(), ZVMicrophone::microphones());
    const auto devices = clock->complete(ZVRecorder::getAppleDevices());
    EXPECT_EQ(devices, clock->complete(ZVAppleDevice::appleDevices()));
    EXPECT_EQ(testing::idsOf(devices), std::vector<std::string>{"phone"});
    EXPECT_EQ(ZVRecorder::getCameras().size() + ZVRecorder::getMicrophones().size(), 2U);
}

}  // namespace
}  // namespace zorvane
