#include "Zorvane/Platform/Linux/Phone/PhoneDevices.hpp"

#include <algorithm>
#include <atomic>
#include <utility>

#include "Zorvane/Platform/AVFoundation/AVError.hpp"
#include "Zorvane/Platform/Foundation/NSError.hpp"
#include "Zorvane/Platform/Linux/Phone/PhoneRoster.hpp"
#include "Zorvane/Platform/Linux/Phone/PhoneWatch.hpp"

namespace zorvane {
namespace {

/// Holds the roster and not the watch, which ends with the devices.
class PhoneSession final : public AVCaptureDeviceDiscoverySession {
  public:
    PhoneSession(std::shared_ptr<PhoneRoster> roster, bool hasPhones)
        : roster_(std::move(roster)), hasPhones_(hasPhones) {}

    std::vector<std::shared_ptr<AVCaptureDevice>> devices() const override {
        return hasPhones_ ? roster_->devices() : PhoneRoster::Devices();
    }

    NSKeyValueObservation observeDevices(std::function<void(ChangeKind kind)> handler) override {
        auto isInitial = std::make_shared<std::atomic<bool>>(true);
        return roster_->observe([isInitial = std::move(isInitial), handler = std::move(handler)] {
            handler(isInitial->exchange(false) ? ChangeKind::initial : ChangeKind::setting);
        });
    }

  private:
    const std::shared_ptr<PhoneRoster> roster_;
    const bool hasPhones_;
};

}  // namespace

PhoneDevices::PhoneDevices() : roster_(std::make_shared<PhoneRoster>()) {}

PhoneDevices::~PhoneDevices() = default;

std::shared_ptr<AVCaptureDeviceDiscoverySession> PhoneDevices::makeDiscoverySession(
    std::vector<AVCaptureDeviceType> deviceTypes, AVMediaType mediaType) {
    const bool hasPhones =
        mediaType == AVMediaType::muxed && std::ranges::count(deviceTypes, AVCaptureDeviceType::externalUnknown) > 0;
    MutexLock lock(mutex_);
    if (!watch_) {
        watch_ = std::make_unique<PhoneWatch>(roster_);
    }
    return std::make_shared<PhoneSession>(roster_, hasPhones);
}

std::shared_ptr<AVCaptureDevice> PhoneDevices::deviceWithUniqueID(const std::string& uniqueID) {
    const PhoneRoster::Devices devices = roster_->devices();
    const auto device = std::ranges::find(devices, uniqueID, [](const auto& listed) { return listed->uniqueID(); });
    return device == devices.end() ? nullptr : *device;
}

AVCaptureDeviceInput PhoneDevices::makeDeviceInput(std::shared_ptr<AVCaptureDevice> device) {
    throw NSError(
        AVFoundationErrorDomain, AVErrorUnknown,
        {"The screen of “" + device->localizedName() +
         "” can't be captured over its cable here. Connect it to a capture card with an HDMI adapter, and record "
         "the capture card, which is listed as a device."});
}

}  // namespace zorvane
