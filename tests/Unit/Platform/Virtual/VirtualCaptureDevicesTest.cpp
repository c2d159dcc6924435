#include "Zorvane/Platform/Virtual/VirtualCaptureDevices.hpp"

#include "tests/Support/VirtualWorld.hpp"

namespace zorvane {
namespace {

using ChangeKind = AVCaptureDeviceDiscoverySession::ChangeKind;

class VirtualCaptureDevicesTest : public testing::VirtualWorldTest {
  protected:
    std::shared_ptr<AVCaptureDeviceDiscoverySession> session(std::vector<AVCaptureDeviceType> types,
                                                             AVMediaType mediaType) {
        return Platform::current()->captureDevices->makeDiscoverySession(std::move(types), mediaType);
    }

    static std::vector<std::string> names(const AVCaptureDeviceDiscoverySession& session) {
        std::vector<std::string> names;
        for (const auto& device : session.devices()) {
            names.push_back(device->localizedName());
        }
        return names;
    }
};

using Names = std::vector<std::string>;

TEST_F(VirtualCaptureDevicesTest, ASessionHasTheDevicesOfItsTypesInTheOrderOfPlugging) {
    desktop->now()
        .plugDevice(VirtualDevice::camera("b", "Second"))
        .plugDevice(VirtualDevice::microphone("m", "Microphone"))
        .plugDevice(VirtualDevice::deskViewCamera("d", "Desk"))
        .plugDevice(VirtualDevice::builtInCamera("a", "Built-in"));
    const auto cameras =
        session({AVCaptureDeviceType::builtInWideAngleCamera, AVCaptureDeviceType::external}, AVMediaType::video);
    EXPECT_EQ(names(*cameras), (Names{"Second", "Built-in"}));
    EXPECT_EQ(names(*session({AVCaptureDeviceType::deskViewCamera}, AVMediaType::video)), Names{"Desk"});
    desktop->now().renameDevice("b", "Renamed");
    EXPECT_EQ(names(*cameras), (Names{"Renamed", "Built-in"})) << "in its place";
}

TEST_F(VirtualCaptureDevicesTest, AnObserverHearsOfItsOwnListOnlyAndNotAfterItsTokenIsGone) {
    const auto cameras = session({AVCaptureDeviceType::external}, AVMediaType::video);
    std::vector<ChangeKind> kinds;
    auto token = cameras->observeDevices([&kinds](ChangeKind kind) { kinds.push_back(kind); });
    desktop->now()
        .plugDevice(VirtualDevice::camera("c", "Camera"))
        .plugDevice(VirtualDevice::microphone("m", "Microphone"))
        .disconnectDevice("c");
    desktop->at(1).unplugDevice("c");
    advance(2);
    const std::vector expected{ChangeKind::initial, ChangeKind::setting, ChangeKind::setting, ChangeKind::setting};
    EXPECT_EQ(kinds, expected);
    token.invalidate();
    desktop->now().plugDevice(VirtualDevice::camera("c", "Camera"));
    EXPECT_EQ(kinds, expected);
}

TEST_F(VirtualCaptureDevicesTest, ADeviceTellsOfSuspensionAndPairing) {
    desktop->now().plugDevice(VirtualDevice::builtInMicrophone("m", "Microphone"));
    const auto device = session({AVCaptureDeviceType::builtInMicrophone}, AVMediaType::audio)->devices().at(0);
    int changes = 0;
    const auto token = device->observeSuspended([&changes] { ++changes; });
    desktop->now().closeLid();
    EXPECT_TRUE(device->isSuspended());
    desktop->now().openLid().pairDevice("m", AVCaptureDevicePairing::notPaired);
    EXPECT_FALSE(device->isSuspended());
    EXPECT_EQ(device->pairing(), AVCaptureDevicePairing::notPaired);
    EXPECT_EQ(changes, 3);
}

TEST_F(VirtualCaptureDevicesTest, TheMainDeviceIsTheChosenOneElseTheFirstThatIsConnected) {
    AVCaptureDevices& devices = *Platform::current()->captureDevices;
    EXPECT_EQ(devices.defaultDeviceID(AVMediaType::audio), "");
    desktop->now()
        .plugDevice(VirtualDevice::microphone("a", "A"))
        .plugDevice(VirtualDevice::microphone("b", "B"))
        .disconnectDevice("a");
    EXPECT_EQ(devices.defaultDeviceID(AVMediaType::audio), "b");
    desktop->now().chooseDevice(AVMediaType::audio, "a");
    EXPECT_EQ(devices.defaultDeviceID(AVMediaType::audio), "a");
}

TEST_F(VirtualCaptureDevicesTest, PhonesShowUpThroughTheRightPropertyOnly) {
    desktop->now().plugDevice(VirtualDevice::phone("p", "Phone"));
    const auto phones = session({AVCaptureDeviceType::externalUnknown}, AVMediaType::muxed);
    CMIOHardware& hardware = *Platform::current()->captureHardware;
    constexpr CMIOObjectPropertyAddress address{0x79657320, 0x676C6F62, 0};
    const std::uint32_t on = 1;

    EXPECT_NE(hardware.setPropertyData(2, address, sizeof on, &on), 0);
    EXPECT_NE(hardware.setPropertyData(kCMIOObjectSystemObject, {0x6E6F2020, 0x676C6F62, 0}, sizeof on, &on), 0);
    EXPECT_NE(hardware.setPropertyData(kCMIOObjectSystemObject, address, 2, &on), 0);
    EXPECT_EQ(names(*phones), Names{});
    EXPECT_EQ(hardware.setPropertyData(kCMIOObjectSystemObject, address, sizeof on, &on), 0);
    EXPECT_EQ(names(*phones), Names{"Phone"});
}

}  // namespace
}  // namespace zorvane
