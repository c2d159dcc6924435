// PipeWire's cameras and microphones.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Zorvane/Platform/AVFoundation/AVCaptureDevice.hpp"

namespace zorvane {

class AVAudioConverting;
class AVVideoConverting;
class PipeWireDeviceList;
class PipeWireRegistry;
class PipeWireSession;

/// Microphones, cameras, and capture cards as muxed devices. `README.md` says which nodes count and how they are named.
/// The first question to a session, or for a default, connects; it blocks until PipeWire has told what there is, or
/// that it isn't there: some milliseconds, and one second once if PipeWire hangs.
class PipeWireCaptureDevices final : public AVCaptureDevices {
  public:
    /// `sound` and `pictures` convert for the capture sessions.
    PipeWireCaptureDevices(std::shared_ptr<PipeWireSession> session, std::shared_ptr<AVAudioConverting> sound,
                           std::shared_ptr<AVVideoConverting> pictures);
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
    const std::shared_ptr<AVAudioConverting> sound_;
    const std::shared_ptr<AVVideoConverting> pictures_;
};

}  // namespace zorvane
