// A capture of virtual devices.
#pragma once

#include <atomic>
#include <chrono>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "Zorvane/Platform/AVFoundation/AVCaptureSession.hpp"
#include "Zorvane/Platform/Foundation/NSKeyValueObservers.hpp"
#include "Zorvane/Platform/Virtual/VirtualCaptureDevices.hpp"
#include "Zorvane/Platform/Virtual/VirtualClock.hpp"

namespace zorvane {

class VirtualDeviceSource;

/// Has a source for each output; all stamp with one clock. It is as the script says at the time of its making.
class VirtualCaptureSession final : public AVCaptureSession {
  public:
    explicit VirtualCaptureSession(std::shared_ptr<VirtualCaptureDevices> devices);
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
    using Interruption = std::function<void(std::exception_ptr reason)>;

    /// What the sources reach: the session may go while a sample is on its way.
    struct Delivery {
        std::chrono::nanoseconds stampOffset{0};  ///< taken from the host time to get a stamp
        std::atomic<bool> isRunning{true};
        NSKeyValueObservers<AVMediaType, std::exception_ptr> interruptionObservers;

        void deliver(const AVCaptureDataOutput& output, const CMSampleBuffer& sample) const;
    };

    /// The device that gives this media type, or null.
    const AVCaptureDevice* inputFor(AVMediaType mediaType) const;
    const AVCaptureDataOutput* outputFor(AVMediaType mediaType) const;
    bool refuses(VirtualSessionRefusal::Part part, AVMediaType mediaType) const;
    void startSources(const VirtualCaptureDevice& device);
    /// Tells the observers once, whichever of the device's sources notices first.
    Interruption interruptionOf(const VirtualCaptureDevice& device) const;
    std::shared_ptr<VirtualDeviceSource> makeSource(const VirtualCaptureDevice& device,
                                                    const std::shared_ptr<AVCaptureDataOutput>& output,
                                                    Interruption interrupt) const;

    const std::shared_ptr<VirtualCaptureDevices> devices_;
    const VirtualSessionConditions conditions_;
    const std::optional<VirtualClock> clock_;
    const std::shared_ptr<Delivery> delivery_ = std::make_shared<Delivery>();
    std::vector<std::shared_ptr<VirtualCaptureDevice>> inputs_;
    std::vector<std::shared_ptr<AVCaptureDataOutput>> outputs_;
    std::vector<std::shared_ptr<VirtualDeviceSource>> sources_;  // present once it was started
};

}  // namespace zorvane
