#include "Zorvane/Platform/Linux/LinuxCaptureDevices.hpp"

namespace zorvane {
namespace {

class EmptySession final : public AVCaptureDeviceDiscoverySession {
  public:
    std::vector<std::shared_ptr<AVCaptureDevice>> devices() const override { return {}; }

    NSKeyValueObservation observeDevices(std::function<void(ChangeKind kind)> handler) override {
        handler(ChangeKind::initial);
        return {};
    }
};

}  // namespace

std::shared_ptr<AVCaptureDeviceDiscoverySession> LinuxCaptureDevices::makeDiscoverySession(
    std::vector<AVCaptureDeviceType> deviceTypes, AVMediaType mediaType) {
    if (const auto& devices = backend(mediaType)) {
        return devices->makeDiscoverySession(std::move(deviceTypes), mediaType);
    }
    return std::make_shared<EmptySession>();
}

std::string LinuxCaptureDevices::defaultDeviceID(AVMediaType mediaType) {
    const auto& devices = backend(mediaType);
    return devices ? devices->defaultDeviceID(mediaType) : std::string();
}

std::shared_ptr<AVCaptureDevice> LinuxCaptureDevices::deviceWithUniqueID(const std::string& uniqueID) {
    for (const auto& devices : {camerasAndMicrophones_, phones_}) {
        if (auto device = devices ? devices->deviceWithUniqueID(uniqueID) : nullptr) {
            return device;
        }
    }
    return nullptr;
}

AVCaptureDeviceInput LinuxCaptureDevices::makeDeviceInput(std::shared_ptr<AVCaptureDevice> device) {
    // A phone's screen is the only device that is of no common type.
    const bool isPhone = device->deviceType() == AVCaptureDeviceType::externalUnknown;
    return backend(isPhone ? AVMediaType::muxed : AVMediaType::audio)->makeDeviceInput(std::move(device));
}

std::shared_ptr<AVCaptureSession> LinuxCaptureDevices::makeCaptureSession() {
    return camerasAndMicrophones_ ? camerasAndMicrophones_->makeCaptureSession() : nullptr;
}

}  // namespace zorvane
