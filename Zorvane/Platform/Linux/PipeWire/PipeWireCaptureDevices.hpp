// PipeWire's cameras and microphones.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Zorvane/Platform/AVFoundation/AVCaptureDevice.hpp"

namespace zorvane {

class AVAudioConverting;
class PipeWireDeviceList;
class PipeWireRegistry;
class PipeWireSession;

/// The audio and video devices; there are no muxed ones. `README.md` says which nodes count and how they are named.
/// The first question to a session, or for a default, connects; it blocks until PipeWire has told what there is, or
/// that it isn't there: some milliseconds, and one second once if PipeWire hangs.
class PipeWireCaptureDevices final : public AVCaptureDevices {
  public:
    /// `converting` serves the capture sessions.
    PipeWireCaptureDevices(std::shared_ptr<PipeWireSession> session, std::shared_ptr<AVAudioConverting> converting);
    ~PipeWireCaptureDevices() override;

    std::shared_ptr<AVCaptureDeviceDiscoverySession> makeDiscoverySession(std::vector<AVCaptureDeviceType> deviceTypes,
                                                                          AVMediaType mediaType) override;
    std::string defaultDeviceID(AVMediaType mediaType) override;
    std::shared_ptr<AVCaptureDevice> deviceWithUniqueID(const std::string& uniqueID) override;
    AVCaptureDeviceInput makeDeviceInput(std::shared_ptr<AVCaptureDevice> device) override;
    std::shared_ptr<AVCaptureSession> makeCaptureSession() override;

  private:
    class Following;
    class Session;

    const std::shared_ptr<Following> following_;
    const std::shared_ptr<AVAudioConverting> converting_;
};

}  // namespace zorvane
