#include "Zorvane/Internal/Discovery/CameraDiscovery.hpp"

#include <gmock/gmock.h>

#include "Zorvane/Internal/ZVUserPreferred.hpp"
#include "tests/Unit/Internal/Discovery/DeviceWorld.hpp"

namespace zorvane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Availability = ZVCamera::Availability;
using Moment = const VirtualMoment&;

class CameraDiscoveryTest : public testing::DeviceWorldTest {
  protected:
    static std::shared_ptr<ZVCamera> camera(std::string_view id) { return CameraDiscovery::shared()->find(id); }
};

TEST_F(CameraDiscoveryTest, TheFirstListHoldsWhatIsPluggedIn) {
    desktop->now().plugDevice(VirtualDevice::camera("cam", "Desk Camera"));
    const auto cameras = ZVCamera::cameras();
    ASSERT_EQ(ids(cameras), std::vector<std::string>{"cam"});
    EXPECT_EQ(
        cameras[0]->debugDescription(),
        "ZVCamera[id:cam isDeskView:false localizedName:Desk Camera modelID:Virtual Model availability:available]");
    EXPECT_EQ(cameras[0]->manufacturer(), "Virtual Maker");
    EXPECT_TRUE(log.has(ZVLogLevel::info, "Reporting 1 cameras."));
    EXPECT_TRUE(log.has(ZVLogLevel::debug, "Starting with initial devices"));
}

TEST_F(CameraDiscoveryTest, ACameraThatComesBackIsTheSameObject) {
    happen([](Moment now) { now.plugDevice(VirtualDevice::camera("cam", "Camera")); });
    const auto before = ZVCamera::cameras().at(0);
    std::vector<Availability> seen;
    const auto subscription = before->availabilityPublisher().subscribe([&](Availability now) { seen.push_back(now); });

    happen([](Moment now) { now.unplugDevice("cam"); });
    ASSERT_THAT(ids(ZVCamera::cameras()), ElementsAre("cam")) << "it stays in the list";
    EXPECT_EQ(before->availability(), Availability::notConnected);
    EXPECT_EQ(before->localizedName(), "Camera");

    happen([](Moment now) { now.plugDevice(VirtualDevice::camera("cam", "New Name")); });
    EXPECT_EQ(ZVCamera::cameras().at(0), before);
    EXPECT_EQ(before->localizedName(), "New Name");
    EXPECT_THAT(seen, ElementsAre(Availability::available, Availability::notConnected, Availability::available));
    EXPECT_TRUE(log.has(ZVLogLevel::debug, "AVCaptureDeviceDiscovery update"));
}

TEST_F(CameraDiscoveryTest, AListedCameraMayBeDisconnected) {
    happen([](Moment now) { now.plugDevice(VirtualDevice::camera("cam", "Camera")).disconnectDevice("cam"); });
    const auto cam = ZVCamera::cameras().at(0);
    EXPECT_EQ(cam->availability(), Availability::notConnected);
    happen([](Moment now) { now.connectDevice("cam"); });
    EXPECT_EQ(cam->availability(), Availability::available);
}

TEST_F(CameraDiscoveryTest, SuspensionMeansAClosedLidOnlyForABuiltInCameraOfALaptop) {
    struct Row {
        VirtualMachine machine;
        Availability builtIn;
    };
    const Row rows[] = {{{.model = "MacBookPro15,1"}, Availability::lidClosed},
                        {{.model = "MacBookPro14,1"}, Availability::unknownSuspended},
                        {{.model = "Macmini8,1"}, Availability::unknownSuspended},
                        {{.model = "ThinkPad", .hasLid = true}, Availability::lidClosed}};
    desktop->now()
        .plugDevice(VirtualDevice::builtInCamera("own", "Own"))
        .plugDevice(VirtualDevice::camera("usb", "Plugged"));
    for (const Row& row : rows) {
        desktop->now().setMachine(row.machine);
        ZVCamera::cameras();
        happen([](Moment now) { now.suspendDevice("own").suspendDevice("usb"); });
        EXPECT_EQ(camera("own")->availability(), row.builtIn) << *row.machine.model;
        EXPECT_EQ(camera("usb")->availability(), Availability::unknownSuspended);
        happen([](Moment now) { now.resumeDevice("own").resumeDevice("usb"); });
        EXPECT_EQ(camera("own")->availability(), Availability::available);
        EXPECT_EQ(camera("usb")->availability(), Availability::available);
    }
}

TEST_F(CameraDiscoveryTest, DeskViewCamerasShowWhenAskedFor) {
    happen([](Moment now) {
        now.plugDevice(VirtualDevice::deskViewCamera("desk", "A Desk")).plugDevice(VirtualDevice::camera("cam", "B"));
    });
    EXPECT_THAT(ids(ZVCamera::cameras()), ElementsAre("cam"));
    EXPECT_THAT(ids(ZVCamera::cameras(true)), ElementsAre("desk", "cam"));
    EXPECT_TRUE(camera("desk")->isDeskView());

    auto all = ZVCamera::updates(true);
    auto plain = ZVCamera::updates();
    happen([](Moment now) { now.unplugDevice("desk").unplugDevice("cam"); });
    EXPECT_THAT(ids(taken(all, 1)[0]), ElementsAre("desk", "cam")) << "the list of now comes first";
    EXPECT_THAT(ids(taken(plain, 1)[0]), ElementsAre("cam"));
    EXPECT_EQ(camera("desk")->availability(), Availability::notConnected);
}

TEST_F(CameraDiscoveryTest, UpdatesTellOfEachChangeOnce) {
    auto updates = ZVCamera::updates();
    Activity::waitUntilIdle();
    happen([](Moment now) { now.plugDevice(VirtualDevice::camera("a", "A")); });
    happen([](Moment now) { now.suspendDevice("a"); });
    happen([](Moment now) { now.suspendDevice("a"); });  // changes nothing
    happen([](Moment now) { now.plugDevice(VirtualDevice::camera("b", "B")); });
    const auto lists = taken(updates, 4);
    EXPECT_THAT(lists[0], IsEmpty());
    EXPECT_THAT(ids(lists[1]), ElementsAre("a"));
    EXPECT_THAT(ids(lists[2]), ElementsAre("a"));
    EXPECT_THAT(ids(lists[3]), ElementsAre("a", "b"));
}

TEST_F(CameraDiscoveryTest, PreferredCamerasComeFirstThenTheOthersByName) {
    happen([](Moment now) {
        now.plugDevice(VirtualDevice::camera("1", "Zoom"))
            .plugDevice(VirtualDevice::camera("3", "Same"))
            .plugDevice(VirtualDevice::camera("2", "Same"))
            .plugDevice(VirtualDevice::camera("4", "Above"));
    });
    EXPECT_THAT(ids(ZVCamera::cameras()), ElementsAre("4", "2", "3", "1"));
    ZVUserPreferred::shared()->updateCamera("1");
    ZVUserPreferred::shared()->updateCamera("3");
    Activity::waitUntilIdle();
    EXPECT_THAT(ids(ZVCamera::cameras()), ElementsAre("3", "1", "4", "2"));
    EXPECT_TRUE(log.has(ZVLogLevel::debug, "Trigger update"));
}

TEST_F(CameraDiscoveryTest, ThePreferredCameraIsTheLastRecordedElseTheMainElseTheFirstThatIsAvailable) {
    EXPECT_EQ(ZVCamera::preferred(), nullptr);
    happen([](Moment now) {
        now.plugDevice(VirtualDevice::deskViewCamera("desk", "A"))
            .plugDevice(VirtualDevice::camera("b", "B"))
            .plugDevice(VirtualDevice::camera("c", "C"))
            .chooseDevice(AVMediaType::video, "c");
    });
    EXPECT_EQ(ZVCamera::preferred()->id(), "c");
    happen([](Moment now) { now.suspendDevice("c"); });
    EXPECT_EQ(ZVCamera::preferred()->id(), "b") << "the main one is suspended, and desk view is only chosen";
    ZVUserPreferred::shared()->updateCamera("b");
    ZVUserPreferred::shared()->updateCamera("desk");
    ZVUserPreferred::shared()->updateCamera("gone");
    EXPECT_EQ(ZVCamera::preferred()->id(), "desk");
    happen([](Moment now) { now.unplugDevice("desk"); });
    EXPECT_EQ(ZVCamera::preferred()->id(), "b");
    happen([](Moment now) { now.unplugDevice("b"); });
    EXPECT_EQ(ZVCamera::preferred(), nullptr);
}

TEST_F(CameraDiscoveryTest, NothingGoesOnWhenTheWorldHasEnded) {
    happen([](Moment now) { now.plugDevice(VirtualDevice::camera("cam", "Camera")); });
    const std::weak_ptr<CameraDiscovery> discovery = CameraDiscovery::shared();
    const auto kept = ZVCamera::cameras().at(0);
    auto updates = ZVCamera::updates();
    Activity::waitUntilIdle();
    Platform::install(Platform());
    Activity::waitUntilIdle();
    EXPECT_TRUE(discovery.expired());
    const auto lines = log.messages().size();
    happen([](Moment now) { now.unplugDevice("cam"); });
    EXPECT_EQ(kept->availability(), Availability::available) << "the last that was known of it";
    EXPECT_EQ(log.messages().size(), lines);
}

}  // namespace
}  // namespace zorvane
