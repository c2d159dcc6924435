// A capture of one microphone of PipeWire.
#pragma once

#include <memory>

#include "Zorvane/Platform/AVFoundation/AVAudioConverter.hpp"
#include "Zorvane/Platform/AVFoundation/AVCaptureSession.hpp"
#include "Zorvane/Platform/CoreMedia/CMClock.hpp"
#include "Zorvane/Platform/Foundation/NSKeyValueObservers.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireDeviceList.hpp"

namespace zorvane {

class PipeWireMicrophone;
class PipeWireSession;
class PipeWireSoundInput;

/// `AVCaptureSession` with one microphone as its input and one output for its sound: float samples in the device's own
/// rate and channels, whatever the graph runs at. Cameras can't be added.
class PipeWireCaptureSession final : public AVCaptureSession {
  public:
    PipeWireCaptureSession(std::shared_ptr<PipeWireSession> session, std::shared_ptr<PipeWireDeviceList> list,
                           std::shared_ptr<AVAudioConverting> converting);
    ~PipeWireCaptureSession() override;

    bool canAddInput(const AVCaptureDeviceInput& input) const override;
    void addInput(AVCaptureDeviceInput input) override;
    bool canAddOutput(const AVCaptureDataOutput& output) const override;
    void addOutput(std::shared_ptr<AVCaptureDataOutput> output) override;
    bool hasEnabledConnection(AVMediaType mediaType) const override;
    void startRunning() override;
    void stopRunning() override;
    const CMClock* synchronizationClock() const override { return &clock_; }
    NSKeyValueObservation observeInterruptions(InterruptionHandler handler) override;

  private:
    std::unique_ptr<PipeWireSoundInput> makeInput() const;

    const std::shared_ptr<PipeWireSession> session_;
    const std::shared_ptr<PipeWireDeviceList> list_;
    const std::shared_ptr<AVAudioConverting> converting_;
    const HostTimeSynchronizationClock clock_;
    // Shared with the session's thread, which may be about to tell of an interruption.
    const std::shared_ptr<NSKeyValueObservers<AVMediaType, std::exception_ptr>> interruptions_;
    std::shared_ptr<const PipeWireCaptureDevice> device_;
    std::shared_ptr<AVCaptureDataOutput> output_;
    std::unique_ptr<PipeWireMicrophone> microphone_;  // while it runs
};

}  // namespace zorvane
