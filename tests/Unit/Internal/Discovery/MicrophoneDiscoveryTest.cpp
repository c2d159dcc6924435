#include "Zorvane/Internal/Discovery/MicrophoneDiscovery.hpp"

#include <gmock/gmock.h>

#include "Zorvane/Internal/ZVUserPreferred.hpp"
#include "tests/Unit/Internal/Discovery/DeviceWorld.hpp"

namespace zorvane {
namespace {

using ::testing::ElementsAre;
using Availability = ZVMicrophone::Availability;
using Moment = const VirtualMoment&;

class MicrophoneDiscoveryTest : public testing::DeviceWorldTest {
  protected:
    MicrophoneDiscoveryTest() {
        desktop->now()
            .plugDevice(VirtualDevice::builtInMicrophone("own", "Own"))
            .plugDevice(VirtualDevice::microphone("usb", "Plugged"));
    }

    static Availability availability(std::string_view id) {
        return MicrophoneDiscovery::shared()->find(id)->availability();
    }
};

TEST_F(MicrophoneDiscoveryTest, ListsMicrophonesAndNothingElse) {
    desktop->now().plugDevice(VirtualDevice::builtInCamera("cam", "Camera"));
    const auto microphones = ZVMicrophone::microphones();
    ASSERT_THAT(ids(microphones), ElementsAre("own", "usb"));
    EXPECT_EQ(microphones[0]->debugDescription(),
              "ZVMicrophone[id:own localizedName:Own modelID:Virtual Model availability:available]");
    EXPECT_TRUE(log.has(ZVLogLevel::info, "Reporting 2 microphones."));
}

TEST_F(MicrophoneDiscoveryTest, OnAT2MacBookTheSuspendedCameraShowsTheClosedLid) {
    desktop->now().setMachine({.model = "MacBookPro15,1"}).plugDevice(VirtualDevice::builtInCamera("cam", "Camera"));
    ZVMicrophone::microphones();
    happen([](Moment now) { now.suspendDevice("cam"); });
    EXPECT_EQ(availability("own"), Availability::lidClosed) << "though it isn't suspended itself";
    EXPECT_EQ(availability("usb"), Availability::available);
    happen([](Moment now) { now.resumeDevice("cam").suspendDevice("own").suspendDevice("usb"); });
    EXPECT_EQ(availability("own"), Availability::unknownSuspended);
    EXPECT_EQ(availability("usb"), Availability::unknownSuspended);
    happen([](Moment now) { now.closeLid().disconnectDevice("own"); });
    EXPECT_EQ(availability("own"), Availability::notConnected);
}

TEST_F(MicrophoneDiscoveryTest, OnAnotherLaptopASuspendedOneIsBehindTheLidUnlessTheCameraIsAwake) {
    desktop->now().setMachine({.model = "ThinkPad", .hasLid = true});
    ZVMicrophone::microphones();
    happen([](Moment now) { now.closeLid(); });
    EXPECT_EQ(availability("own"), Availability::lidClosed);
    happen([](Moment now) { now.plugDevice(VirtualDevice::builtInCamera("cam", "Camera")); });
    EXPECT_EQ(availability("own"), Availability::unknownSuspended);
    happen([](Moment now) { now.suspendDevice("cam"); });
    EXPECT_EQ(availability("own"), Availability::lidClosed);
    happen([](Moment now) { now.resumeDevice("own"); });
    EXPECT_EQ(availability("own"), Availability::available) << "it works behind the lid";
}

TEST_F(MicrophoneDiscoveryTest, ASuspendedOneOnADesktopMachineIsSuspended) {
    desktop->now().plugDevice(VirtualDevice::builtInCamera("cam", "Camera"));
    ZVMicrophone::microphones();
    happen([](Moment now) { now.closeLid(); });
    EXPECT_EQ(availability("own"), Availability::unknownSuspended);
}

TEST_F(MicrophoneDiscoveryTest, AMicrophoneThatComesBackIsTheSameObjectAndTheLastRecordedComesFirst) {
    const auto before = ZVMicrophone::microphones().at(1);
    happen([](Moment now) { now.unplugDevice("usb"); });
    EXPECT_EQ(before->availability(), Availability::notConnected);
    EXPECT_EQ(ZVMicrophone::preferred()->id(), "own");
    happen([](Moment now) { now.plugDevice(VirtualDevice::microphone("usb", "Plugged")); });
    EXPECT_EQ(before->availability(), Availability::available);
    ZVUserPreferred::shared()->updateMicrophone("usb");
    Activity::waitUntilIdle();
    EXPECT_EQ(ZVMicrophone::microphones().at(0), before);
    EXPECT_EQ(ZVMicrophone::preferred(), before);
}

}  // namespace
}  // namespace zorvane
