#include "Zorvane/Platform/Linux/LinuxCaptureDevices.hpp"

#include <algorithm>
#include <atomic>
#include <iterator>

namespace zorvane {
namespace {

using ChangeKind = AVCaptureDeviceDiscoverySession::ChangeKind;

/// The devices of several sessions, one session's behind the other's.
class JoinedSession final : public AVCaptureDeviceDiscoverySession {
  public:
    using Parts = std::vector<std::shared_ptr<AVCaptureDeviceDiscoverySession>>;

    explicit JoinedSession(Parts parts) : parts_(std::move(parts)) {}

    std::vector<std::shared_ptr<AVCaptureDevice>> devices() const override {
        std::vector<std::shared_ptr<AVCaptureDevice>> all;
        for (const auto& part : parts_) {
            std::ranges::copy(part->devices(), std::back_inserter(all));
        }
        return all;
    }

    /// The list is there at first when each part has said so.
    NSKeyValueObservation observeDevices(std::function<void(ChangeKind kind)> handler) override {
        struct Observing {
            std::function<void(ChangeKind)> handler;
            std::atomic<std::size_t> missing;
        };
        const auto observing = std::make_shared<Observing>(std::move(handler), parts_.size());
        std::vector<NSKeyValueObservation> observations;
        for (const auto& part : parts_) {
            observations.push_back(part->observeDevices([observing](ChangeKind kind) {
                if (kind == ChangeKind::initial && --observing->missing == 0) {
                    observing->handler(ChangeKind::initial);
                } else if (kind == ChangeKind::setting && observing->missing == 0) {
                    observing->handler(ChangeKind::setting);
                }
            }));
        }
        if (parts_.empty()) {
            observing->handler(ChangeKind::initial);
        }
        const auto kept = std::make_shared<std::vector<NSKeyValueObservation>>(std::move(observations));
        return NSKeyValueObservation([kept] { kept->clear(); });
    }

  private:
    const Parts parts_;
};

}  // namespace

std::shared_ptr<AVCaptureDeviceDiscoverySession> LinuxCaptureDevices::makeDiscoverySession(
    std::vector<AVCaptureDeviceType> deviceTypes, AVMediaType mediaType) {
    JoinedSession::Parts parts;
    if (phones_ && mediaType == AVMediaType::muxed) {
        parts.push_back(phones_->makeDiscoverySession(deviceTypes, mediaType));
    }
    if (camerasAndMicrophones_) {
        parts.push_back(camerasAndMicrophones_->makeDiscoverySession(deviceTypes, mediaType));
    }
    return parts.size() == 1 ? parts.front() : std::make_shared<JoinedSession>(std::move(parts));
}

std::string LinuxCaptureDevices::defaultDeviceID(AVMediaType mediaType) {
    return camerasAndMicrophones_ ? camerasAndMicrophones_->defaultDeviceID(mediaType) : std::string();
}

std::shared_ptr<AVCaptureDevice> LinuxCaptureDevices::deviceWithUniqueID(const std::string& uniqueID) {
    for (const auto& devices : {phones_, camerasAndMicrophones_}) {
        if (auto device = devices ? devices->deviceWithUniqueID(uniqueID) : nullptr) {
            return device;
        }
    }
    return nullptr;
}

AVCaptureDeviceInput LinuxCaptureDevices::makeDeviceInput(std::shared_ptr<AVCaptureDevice> device) {
    const bool isPhone =
        !camerasAndMicrophones_ || (phones_ && phones_->deviceWithUniqueID(device->uniqueID()) == device);
    return (isPhone ? phones_ : camerasAndMicrophones_)->makeDeviceInput(std::move(device));
}

std::shared_ptr<AVCaptureSession> LinuxCaptureDevices::makeCaptureSession() {
    return camerasAndMicrophones_ ? camerasAndMicrophones_->makeCaptureSession() : nullptr;
}

}  // namespace zorvane
