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

}  // namespace zorvane
