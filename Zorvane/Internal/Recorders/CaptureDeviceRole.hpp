// The devices that recorders capture: how they are found, opened and spoken of.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Zorvane/Internal/Logger.hpp"
#include "Zorvane/Platform/AVFoundation/AVCaptureDevice.hpp"
#include "Zorvane/ZVError.hpp"

namespace zorvane {

/// What a device is to its recorder.
struct CaptureDeviceRole {
    AVMediaType mediaType;           ///< what it gives
    std::string_view adjective;      ///< before "device" in messages; with a space behind it, or empty
    std::string_view idKey;          ///< of its id in the log
    std::string_view inputName;      ///< in messages
    std::string_view soundSource;    ///< what its sound is called for people; empty if it has none
    std::string_view refusalEnding;  ///< of the message that the session refuses it
    ZVError (*error)(std::string_view message, ZVError::UserMessage userMessage);  ///< when it can't be had
    void (*explainAbsence)(const std::string& id, const Logger& logger);  ///< throws what it can say, or returns

    static const CaptureDeviceRole aloneMicrophone;  ///< of a recorder that captures nothing else
    static const CaptureDeviceRole microphone;       ///< beside a camera
    static const CaptureDeviceRole camera;
    static const CaptureDeviceRole phone;
};

struct CaptureDevice {
    const CaptureDeviceRole& role;
    std::shared_ptr<AVCaptureDevice> device;
};

/// Logs and throws a `ZVError` (bad operation) unless the user lets this process capture all of these: audio, video.
/// Blocks.
void requireCaptureAccess(const std::vector<AVMediaType>& media, const Logger& logger);

/// The connected device with this id. Logs and throws a `ZVError` when there is none, where possible with a text for
/// the user. Blocks.
CaptureDevice requireCaptureDevice(const CaptureDeviceRole& role, const std::string& id, const Logger& logger);

/// Opens a device for capture. Logs and throws a `ZVError` with the platform's text for the user when it refuses.
AVCaptureDeviceInput openCaptureDevice(const CaptureDevice& device, const Logger& logger);

}  // namespace zorvane
