// Explains to the user why a source gives nothing.
#pragma once

#include <cstdint>
#include <string>

#include "Zorvane/Internal/Logger.hpp"

namespace zorvane {

// Each looks the source up among those that the process has ever seen. If it is there, it logs its state and throws a
// `ZVError` (internal error) whose user message says what to do, in the source's own name. If it isn't, the function
// returns, and the caller goes on to throw an error of its own. They may block for the first look at the system.

void throwMicrophoneNoAVCaptureDevice(const std::string& microphoneID, const Logger& logger);
void throwMicrophoneNoSampleBuffers(const std::string& microphoneID, const Logger& logger);
void throwCameraNoAVCaptureDevice(const std::string& cameraID, const Logger& logger);
void throwCameraNoSampleBuffers(const std::string& cameraID, const Logger& logger);
void throwAppleDeviceNoAVCaptureDevice(const std::string& deviceID, const Logger& logger);
void throwAppleDeviceNoSampleBuffers(const std::string& deviceID, const Logger& logger);
void throwCantFindDisplay(std::uint32_t displaySerialNumber, const Logger& logger);
void throwCantFindWindow(std::uint32_t windowID, const Logger& logger);

}  // namespace zorvane
