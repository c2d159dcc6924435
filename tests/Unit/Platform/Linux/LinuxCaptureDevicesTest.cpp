// Devices of two services as one list.
#include "Zorvane/Platform/Linux/LinuxCaptureDevices.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Zorvane/Platform/Foundation/NSKeyValueObservers.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireCaptureDevice.hpp"

namespace zorvane {
namespace {

using ChangeKind = AVCaptureDeviceDiscoverySession::ChangeKind;
using testing::ElementsAre;

/// A service with one device, which tells of its list when it is told to.
class OneDevice final : public AVCaptureDevices, public AVCaptureDeviceDiscoverySession {
  public:
    explicit OneDevice(const std::string& uniqueID)
        : device_(std::make_shared<PipeWireCaptureDevice>(
              PipeWireDeviceDescription{.uniqueID = uniqueID, .deviceType = AVCaptureDeviceType::externalUnknown})) {}

    void tell(ChangeKind kind) { observers_.notify(kind); }

    std::vector<std::shared_ptr<AVCaptureDevice>> devices() const override { return {device_}; }
    NSKeyValueObservation observeDevices(std::function<void(ChangeKind kind)> handler) override {
        return observers_.add(std::move(handler));
    }
    std::shared_ptr<AVCaptureDeviceDiscoverySession> makeDiscoverySession(std::vector<AVCaptureDeviceType>,
                                                                          AVMediaType) override {
        return {std::shared_ptr<void>(), this};
    }
    std::string defaultDeviceID(AVMediaType) override { return device_->uniqueID(); }
    std::shared_ptr<AVCaptureDevice> deviceWithUniqueID(const std::string& uniqueID) override {
        return uniqueID == device_->uniqueID() ? device_ : nullptr;
    }
    AVCaptureDeviceInput makeDeviceInput(std::shared_ptr<AVCaptureDevice> device) override {
        opened = device->uniqueID();
        return {std::move(device)};
    }
    std::shared_ptr<AVCaptureSession> makeCaptureSession() override { return nullptr; }

    std::string opened;

  private:
    const std::shared_ptr<AVCaptureDevice> device_;
    NSKeyValueObservers<ChangeKind> observers_;
};

TEST(LinuxCaptureDevicesTest, PhonesAndCaptureCardsAreOneList) {
    const auto cards = std::make_shared<OneDevice>("card");
    const auto phones = std::make_shared<OneDevice>("phone");
    LinuxCaptureDevices devices(cards, phones);
    const auto session = devices.makeDiscoverySession({AVCaptureDeviceType::externalUnknown}, AVMediaType::muxed);
    std::vector<std::string> ids;
    for (const auto& device : session->devices()) {
        ids.push_back(device->uniqueID());
        devices.makeDeviceInput(devices.deviceWithUniqueID(ids.back()));
    }
    EXPECT_THAT(ids, ElementsAre("phone", "card"));
    EXPECT_EQ(phones->opened, "phone");
    EXPECT_EQ(cards->opened, "card");

    std::vector<ChangeKind> told;
    auto token = session->observeDevices([&told](ChangeKind kind) { told.push_back(kind); });
    cards->tell(ChangeKind::initial);
    cards->tell(ChangeKind::setting);
    EXPECT_TRUE(told.empty()) << "the phones aren't known yet";
    phones->tell(ChangeKind::initial);
    phones->tell(ChangeKind::setting);
    EXPECT_THAT(told, ElementsAre(ChangeKind::initial, ChangeKind::setting));
    token.invalidate();
    cards->tell(ChangeKind::setting);
    EXPECT_EQ(told.size(), 2u);
}

TEST(LinuxCaptureDevicesTest, CamerasAreNeverPhones) {
    const auto cameras = std::make_shared<OneDevice>("camera");
    LinuxCaptureDevices devices(cameras, std::make_shared<OneDevice>("phone"));
    const auto session = devices.makeDiscoverySession({AVCaptureDeviceType::externalUnknown}, AVMediaType::video);
    EXPECT_EQ(session->devices().size(), 1u);
    EXPECT_EQ(session->devices().front()->uniqueID(), "camera");
    EXPECT_TRUE(LinuxCaptureDevices(nullptr, nullptr).makeDiscoverySession({}, AVMediaType::muxed)->devices().empty());
}

}  // namespace
}  // namespace zorvane
