#include "Zorvane/Internal/RecorderUserMessages.hpp"

#include <fmt/format.h>

#include "Zorvane/Internal/Discovery/AppleDeviceDiscovery.hpp"
#include "Zorvane/Internal/Discovery/CameraDiscovery.hpp"
#include "Zorvane/Internal/Discovery/DisplayDiscovery.hpp"
#include "Zorvane/Internal/Discovery/MicrophoneDiscovery.hpp"
#include "Zorvane/Internal/Discovery/WindowDiscovery.hpp"
#include "Zorvane/Internal/SourceTrouble.hpp"
#include "Zorvane/ZVError.hpp"

namespace zorvane {
namespace {

/// Logs the trouble with a source, under the name of its type, and throws it with its message.
[[noreturn]] void throwTrouble(const SourceTrouble& trouble, std::string_view id, std::string_view availability,
                               std::string message, LogMetadata metadata, const Logger& logger) {
    metadata[fmt::format("{}.availability", trouble.typeName)] = availability;
    logger.error(trouble.logLine, [&] { return metadata; });
    throw ZVError::internalError(debugDescription(trouble, id, availability), std::move(message));
}

/// Throws if the discovery knows the device.
template <class Discovery>
void throwIfKnown(const SourceTrouble& trouble, const std::string& id, const Logger& logger) {
    if (const auto device = Discovery::shared()->find(id)) {
        const std::string_view availability = rawValue(device->availability());
        throwTrouble(trouble, id, availability, userMessage(trouble, device->localizedName(), availability), {},
                     logger);
    }
}

}  // namespace

void throwMicrophoneNoAVCaptureDevice(const std::string& microphoneID, const Logger& logger) {
    throwIfKnown<MicrophoneDiscovery>(microphoneWithoutDevice, microphoneID, logger);
}

void throwMicrophoneNoSampleBuffers(const std::string& microphoneID, const Logger& logger) {
    throwIfKnown<MicrophoneDiscovery>(microphoneWithoutSamples, microphoneID, logger);
}

void throwCameraNoAVCaptureDevice(const std::string& cameraID, const Logger& logger) {
    throwIfKnown<CameraDiscovery>(cameraWithoutDevice, cameraID, logger);
}

void throwCameraNoSampleBuffers(const std::string& cameraID, const Logger& logger) {
    throwIfKnown<CameraDiscovery>(cameraWithoutSamples, cameraID, logger);
}

void throwAppleDeviceNoAVCaptureDevice(const std::string& deviceID, const Logger& logger) {
    throwIfKnown<AppleDeviceDiscovery>(appleDeviceWithoutDevice, deviceID, logger);
}

void throwAppleDeviceNoSampleBuffers(const std::string& deviceID, const Logger& logger) {
    throwIfKnown<AppleDeviceDiscovery>(appleDeviceWithoutSamples, deviceID, logger);
}

void throwCantFindDisplay(std::uint32_t displaySerialNumber, const Logger& logger) {
    if (const auto display = DisplayDiscovery::shared()->find(displaySerialNumber)) {
        const std::string id = std::to_string(displaySerialNumber);
        const std::string ending = fmt::format(" because id {} can't be found.", id);
        const SourceTrouble trouble = displayNotFound(ending);
        const std::string_view availability = rawValue(display->availability());
        throwTrouble(trouble, id, availability, userMessage(trouble, display->localizedName(), availability),
                     {{"displaySerialNumber", id}}, logger);
    }
}

void throwCantFindWindow(std::uint32_t windowID, const Logger& logger) {
    if (const auto window = WindowDiscovery::shared()->find(windowID)) {
        const std::string id = std::to_string(windowID);
        const std::string_view availability = rawValue(window->availability());
        throwTrouble(windowNotFound, id, availability,
                     windowMessage(windowID, window->title(), window->applicationName(), availability),
                     {{"windowID", id}}, logger);
    }
}

}  // namespace zorvane
