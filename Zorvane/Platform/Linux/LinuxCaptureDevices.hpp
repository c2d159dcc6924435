// The capture devices of a Linux desktop, which come from more than one service.
#pragma once

#include <memory>
#include <utility>

#include "Zorvane/Platform/AVFoundation/AVCaptureDevice.hpp"

namespace zorvane {

/// Asks one backend for cameras, microphones and capture cards, and another one for phones. Cards and phones are listed
/// together, the phones first.
class LinuxCaptureDevices final : public AVCaptureDevices {
  public:
    /// Either may be null: there are no such devices then.
    LinuxCaptureDevices(std::shared_ptr<AVCaptureDevices> camerasAndMicrophones,
                        std::shared_ptr<AVCaptureDevices> phones)
        : camerasAndMicrophones_(std::move(camerasAndMicrophones)), phones_(std::move(phones)) {}

    std::shared_ptr<AVCaptureDeviceDiscoverySession> makeDiscoverySession(std::vector<AVCaptureDeviceType> deviceTypes,
                                                                          AVMediaType mediaType) override;
    std::string defaultDeviceID(AVMediaType mediaType) override;
    std::shared_ptr<AVCaptureDevice> deviceWithUniqueID(const std::string& uniqueID) override;
    AVCaptureDeviceInput makeDeviceInput(std::shared_ptr<AVCaptureDevice> device) override;
    /// Of cameras and microphones; null if there can't be any.
    std::shared_ptr<AVCaptureSession> makeCaptureSession() override;

  private:
    const std::shared_ptr<AVCaptureDevices> camerasAndMicrophones_;
    const std::shared_ptr<AVCaptureDevices> phones_;
};

}  // namespace zorvane
