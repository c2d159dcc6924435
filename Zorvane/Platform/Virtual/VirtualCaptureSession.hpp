// A capture of a virtual microphone.
#pragma once

#include <atomic>
#include <memory>
#include <optional>
#include <vector>

#include "Zorvane/Platform/AVFoundation/AVCaptureSession.hpp"
#include "Zorvane/Platform/Foundation/NSKeyValueObservers.hpp"
#include "Zorvane/Platform/Virtual/VirtualCaptureDevices.hpp"
#include "Zorvane/Platform/Virtual/VirtualClock.hpp"

namespace zorvane {

class VirtualMicrophoneSource;

/// Takes one microphone and one output for its sound.
class VirtualCaptureSession final : public AVCaptureSession {
  public:
    explicit VirtualCaptureSession(std::shared_ptr<VirtualCaptureDevices> devices) : devices_(std::move(devices)) {}
    ~VirtualCaptureSession() override;

    bool canAddInput(const AVCaptureDeviceInput& input) const override;
    void addInput(AVCaptureDeviceInput input) override;
    bool canAddOutput(const AVCaptureDataOutput& output) const override;
    void addOutput(std::shared_ptr<AVCaptureDataOutput> output) override;
    bool hasEnabledConnection(AVMediaType mediaType) const override;
    void startRunning() override;
    void stopRunning() override;
    const CMClock* synchronizationClock() const override { return clock_ ? &*clock_ : nullptr; }
    NSKeyValueObservation observeInterruptions(InterruptionHandler handler) override;

  private:
    /// What the source reaches: the session may go while a sample is on its way.
    struct Delivery {
        std::shared_ptr<AVCaptureDataOutput> output;
        std::chrono::nanoseconds stampOffset{0};  ///< taken from the host time to get a stamp
        std::atomic<bool> isRunning{true};

        void deliver(const CMSampleBuffer& sample) const;
    };

    const std::shared_ptr<VirtualCaptureDevices> devices_;
    const std::shared_ptr<NSKeyValueObservers<AVMediaType, std::exception_ptr>> interruptionObservers_ =
        std::make_shared<NSKeyValueObservers<AVMediaType, std::exception_ptr>>();
    std::shared_ptr<AVCaptureDevice> device_;
    std::shared_ptr<AVCaptureDataOutput> output_;
    std::optional<VirtualClock> clock_;
    std::shared_ptr<Delivery> delivery_;  // present once it was started
    std::shared_ptr<VirtualMicrophoneSource> source_;
};

}  // namespace zorvane
