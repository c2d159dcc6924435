#include "Zorvane/Internal/Discovery/AppleDeviceDiscovery.hpp"

#include <gmock/gmock.h>

#include "tests/Unit/Internal/Discovery/DeviceWorld.hpp"

namespace zorvane {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using Availability = ZVAppleDevice::Availability;
using Moment = const VirtualMoment&;

class AppleDeviceDiscoveryTest : public testing::DeviceWorldTest {
  protected:
    ZVAppleDevice::List devices() { return clock->complete(ZVAppleDevice::appleDevices()); }
};

TEST_F(AppleDeviceDiscoveryTest, SwitchesPhonesOnAndListsThem) {
    VirtualDevice phone = VirtualDevice::phone("phone", "My Phone");
    phone.modelID = "";
    desktop->now().plugDevice(phone);
    ASSERT_THAT(ids(devices()), ElementsAre("phone"));
    EXPECT_EQ(devices()[0]->debugDescription(),
              "ZVAppleDevice[id:phone localizedName:My Phone modelID:nil availability:available]");
    EXPECT_TRUE(log.has(ZVLogLevel::debug, "Enabling DAL"));
    EXPECT_TRUE(log.has(ZVLogLevel::debug, "Enabled DAL"));
    EXPECT_TRUE(log.has(ZVLogLevel::info, "Reporting 1 devices."));
}

TEST_F(AppleDeviceDiscoveryTest, GoesOnWhenPhonesCannotBeSwitchedOn) {
    desktop->now().setMachine({.screenCaptureDevicesStatus = -50}).plugDevice(VirtualDevice::phone("phone", "Phone"));
    EXPECT_THAT(devices(), IsEmpty());
    EXPECT_TRUE(log.has(ZVLogLevel::error, "Failed to enable DAL", {{"error", "EnableDALError(status: -50)"}}));
    EXPECT_EQ(log.count(ZVLogLevel::debug, "Enabled DAL"), 0U);
}

TEST_F(AppleDeviceDiscoveryTest, FollowsPairingAndTheCable) {
    desktop->now().plugDevice(VirtualDevice::phone("phone", "Phone"));
    const auto phone = devices().at(0);
    const std::pair<AVCaptureDevicePairing, Availability> rows[] = {
        {AVCaptureDevicePairing::notPaired, Availability::notPaired},
        {AVCaptureDevicePairing::pairedNeedsConnect, Availability::pairedNeedsConnect},
        {AVCaptureDevicePairing::pairedNeedsReconnect, Availability::pairedNeedsReconnect},
        {AVCaptureDevicePairing::notApplicable, Availability::available}};
    for (const auto& [pairing, availability] : rows) {
        happen([pairing = pairing](Moment now) { now.pairDevice("phone", pairing); });
        EXPECT_EQ(phone->availability(), availability);
    }
    happen([](Moment now) { now.unplugDevice("phone"); });
    EXPECT_EQ(phone->availability(), Availability::notConnected);
    happen([](Moment now) { now.plugDevice(VirtualDevice::phone("phone", "Phone")).disconnectDevice("phone"); });
    EXPECT_EQ(phone->availability(), Availability::notConnected);
    happen([](Moment now) { now.connectDevice("phone"); });
    EXPECT_EQ(phone->availability(), Availability::available);
    EXPECT_EQ(devices().at(0), phone);
}

TEST_F(AppleDeviceDiscoveryTest, ASuspendedPhoneStaysAvailableWithAWarning) {
    desktop->now().plugDevice(VirtualDevice::phone("phone", "Phone"));
    const auto phone = devices().at(0);
    happen([](Moment now) { now.suspendDevice("phone"); });
    EXPECT_EQ(phone->availability(), Availability::available);
    bool warned = false;
    for (const auto& line : log.messages()) {
        if (line.message == "Device is suspended, unsupported in code, handling as available") {
            warned = true;
            EXPECT_EQ(line.level, ZVLogLevel::warning);
            EXPECT_THAT(line.metadata.at("muxed"), HasSubstr("phone modelID:Virtual Model,manufacturer:Virtual Maker"));
            EXPECT_THAT(line.metadata.at("device"), HasSubstr(",deviceType:externalUnknown,transportType:0x75736220"));
        }
    }
    EXPECT_TRUE(warned);
}

/// Phones that are asked for and never answer.
class SilentDevices final : public AVCaptureDevices {
  public:
    std::shared_ptr<AVCaptureDeviceDiscoverySession> makeDiscoverySession(std::vector<AVCaptureDeviceType>,
                                                                          AVMediaType) override {
        class Session final : public AVCaptureDeviceDiscoverySession {
            std::vector<std::shared_ptr<AVCaptureDevice>> devices() const override { return {}; }
            NSKeyValueObservation observeDevices(std::function<void(ChangeKind)>) override { return {}; }
        };
        return std::make_shared<Session>();
    }
    std::string defaultDeviceID(AVMediaType) override { return {}; }
    std::shared_ptr<AVCaptureDevice> deviceWithUniqueID(const std::string&) override { return nullptr; }
    AVCaptureDeviceInput makeDeviceInput(std::shared_ptr<AVCaptureDevice> device) override {
        return {std::move(device)};
    }
    std::shared_ptr<AVCaptureSession> makeCaptureSession() override { return nullptr; }
};

TEST_F(AppleDeviceDiscoveryTest, WaitsASecondAtMostForTheFirstList) {
    Platform platform = makeVirtualPlatform(desktop, writing);
    platform.captureDevices = std::make_shared<SilentDevices>();
    Platform::install(platform);
    EXPECT_THAT(devices(), IsEmpty());
    EXPECT_DOUBLE_EQ(secondsNow(), 1.0);
}

}  // namespace
}  // namespace zorvane
