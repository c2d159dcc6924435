// A device that gives pictures and sound of one signal.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "Zorvane/Platform/Linux/PipeWire/PipeWireCaptureDevice.hpp"

namespace zorvane {

/// A capture card: a camera and a microphone that belong together, as one device. Each is listed on its own as well.
class PipeWireCaptureCard final : public AVCaptureDevice {
  public:
    using Half = std::shared_ptr<PipeWireCaptureDevice>;

    PipeWireCaptureCard(Half camera, Half microphone);

    /// The camera's, with a word in front, since a device has an id of its own.
    std::string uniqueID() const override { return idOf(*camera_); }
    std::string localizedName() const override { return camera_->localizedName(); }
    std::string modelID() const override { return camera_->modelID(); }
    std::string manufacturer() const override { return camera_->manufacturer(); }
    AVCaptureDeviceType deviceType() const override { return AVCaptureDeviceType::externalUnknown; }
    AVCaptureDeviceTransportType transportType() const override { return camera_->transportType(); }
    bool isConnected() const override { return camera_->isConnected() && microphone_->isConnected(); }
    bool isSuspended() const override { return camera_->isSuspended() || microphone_->isSuspended(); }
    AVCaptureDevicePairing pairing() const override { return AVCaptureDevicePairing::notApplicable; }
    bool isInUseByAnotherApplication() const override {
        return camera_->isInUseByAnotherApplication() || microphone_->isInUseByAnotherApplication();
    }
    CMFormatDescription activeFormat() const override { return camera_->activeFormat(); }
    CMTime activeVideoMinFrameDuration() const override { return camera_->activeVideoMinFrameDuration(); }
    NSKeyValueObservation observeSuspended(std::function<void()> handler) override {
        return observers_->add(std::move(handler));
    }

    const Half& camera() const { return camera_; }
    const Half& microphone() const { return microphone_; }

    static std::string idOf(const PipeWireCaptureDevice& camera) { return "capture-card:" + camera.uniqueID(); }

  private:
    const Half camera_;
    const Half microphone_;
    // The halves tell them, as long as this lives.
    const std::shared_ptr<NSKeyValueObservers<>> observers_ = std::make_shared<NSKeyValueObservers<>>();
    const NSKeyValueObservation cameraObservation_;
    const NSKeyValueObservation microphoneObservation_;
};

}  // namespace zorvane
