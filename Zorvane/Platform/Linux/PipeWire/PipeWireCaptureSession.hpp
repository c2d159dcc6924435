// A capture of one camera, one microphone, or both, of PipeWire.
#pragma once

#include <memory>

#include "Zorvane/Platform/AVFoundation/AVAudioConverter.hpp"
#include "Zorvane/Platform/AVFoundation/AVCaptureSession.hpp"
#include "Zorvane/Platform/AVFoundation/AVVideoConverter.hpp"
#include "Zorvane/Platform/CoreMedia/CMClock.hpp"
#include "Zorvane/Platform/Foundation/NSKeyValueObservers.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireDeviceList.hpp"

namespace zorvane {

class PipeWireCamera;
class PipeWireMicrophone;
class PipeWireSession;
class PipeWireSoundInput;
class PipeWireVideoInput;

/// `AVCaptureSession` with one output for each media type: sound as float samples in the microphone's own rate and
/// channels, whatever the graph runs at, and pictures as '420v', whatever the camera gives.
class PipeWireCaptureSession final : public AVCaptureSession {
  public:
    /// Without `pictures` no camera can be added.
    PipeWireCaptureSession(std::shared_ptr<PipeWireSession> session, std::shared_ptr<PipeWireDeviceList> list,
                           std::shared_ptr<AVAudioConverting> sound, std::shared_ptr<AVVideoConverting> pictures);
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
    class Interruptions;

    /// What gives the samples of one media type, and where they go.
    struct Connection {
        std::shared_ptr<const PipeWireCaptureDevice> device;
        AVMediaType input = AVMediaType::audio;  ///< the type of the device that was added: muxed for a half of one
        std::shared_ptr<AVCaptureDataOutput> output;
    };

    const Connection* connection(AVMediaType mediaType) const;
    std::unique_ptr<PipeWireMicrophone> makeMicrophone() const;
    std::unique_ptr<PipeWireCamera> makeCamera() const;

    const std::shared_ptr<PipeWireSession> session_;
    const std::shared_ptr<PipeWireDeviceList> list_;
    const std::shared_ptr<AVAudioConverting> soundConverting_;
    const std::shared_ptr<AVVideoConverting> pictureConverting_;
    const HostTimeSynchronizationClock clock_;
    // Shared with the session's thread, which may be about to tell of an interruption.
    const std::shared_ptr<Interruptions> interruptions_;
    Connection sound_;
    Connection pictures_;
    std::unique_ptr<PipeWireMicrophone> microphone_;  // while it runs
    std::unique_ptr<PipeWireCamera> camera_;          // likewise
};

}  // namespace zorvane
