#include "Zorvane/Internal/Recorders/CaptureDeviceRole.hpp"

#include <fmt/format.h>

#include <algorithm>

#include "Zorvane/Internal/Concurrency/Executor.hpp"
#include "Zorvane/Internal/LogPieces.hpp"
#include "Zorvane/Internal/RecorderUserMessages.hpp"
#include "Zorvane/Platform/Platform.hpp"
#include "Zorvane/ZVAuthorizationStatus.hpp"

namespace zorvane {

const CaptureDeviceRole CaptureDeviceRole::aloneMicrophone{.mediaType = AVMediaType::audio,
                                                           .adjective = "audio ",
                                                           .idKey = "microphoneID",
                                                           .inputName = "audioInput",
                                                           .soundSource = "Microphone",
                                                           .refusalEnding = ".",
                                                           .error = ZVError::internalError,
                                                           .explainAbsence = throwMicrophoneNoAVCaptureDevice};

const CaptureDeviceRole CaptureDeviceRole::microphone{.mediaType = AVMediaType::audio,
                                                      .adjective = "audio ",
                                                      .idKey = "microphoneID",
                                                      .inputName = "audioInput",
                                                      .soundSource = "Microphone",
                                                      .refusalEnding = "",
                                                      .error = ZVError::badOperation,
                                                      .explainAbsence = throwMicrophoneNoAVCaptureDevice};

const CaptureDeviceRole CaptureDeviceRole::camera{.mediaType = AVMediaType::video,
                                                  .adjective = "video ",
                                                  .idKey = "cameraID",
                                                  .inputName = "videoInput",
                                                  .soundSource = "",
                                                  .refusalEnding = "",
                                                  .error = ZVError::badOperation,
                                                  .explainAbsence = throwCameraNoAVCaptureDevice};

const CaptureDeviceRole CaptureDeviceRole::phone{.mediaType = AVMediaType::muxed,
                                                 .adjective = "",
                                                 .idKey = "deviceID",
                                                 .inputName = "deviceInput",
                                                 .soundSource = "Device",
                                                 .refusalEnding = "",
                                                 .error = ZVError::badOperation,
                                                 .explainAbsence = throwAppleDeviceNoAVCaptureDevice};

namespace {

[[noreturn]] void failForMissing(std::string_view permissions, std::string_view message, const Logger& logger) {
    logger.error(fmt::format("Missing required {} recording permissions. See ZVAuthorizationStatus.", permissions));
    throw ZVError::badOperation(fmt::format("To record {}. See ZVAuthorizationStatus.", message));
}

ZVError noDeviceError(const CaptureDeviceRole& role, const std::string& id,
                      ZVError::UserMessage userMessage = std::nullopt) {
    return role.error(fmt::format("Can't find {}device: {}", role.adjective, id), std::move(userMessage));
}

LogMetadata metadataOf(const AVCaptureDevice& device) {
    return {{"uniqueID", device.uniqueID()},
            {"modelID", device.modelID()},
            {"localizedName", device.localizedName()},
            {"isConnected", fmt::format("{}", device.isConnected())},
            {"isSuspended", fmt::format("{}", device.isSuspended())},
            {"isInUseByAnotherApplication", fmt::format("{}", device.isInUseByAnotherApplication())}};
}

}  // namespace

void requireCaptureAccess(const std::vector<AVMediaType>& media, const Logger& logger) {
    const PoolBlockingScope blocking;
    const auto isMissing = [&](AVMediaType mediaType, AVAuthorizationStatus (*status)()) {
        return std::ranges::count(media, mediaType) > 0 && status() != AVAuthorizationStatus::authorized;
    };
    const bool isAudioMissing = isMissing(AVMediaType::audio, ZVAuthorizationStatus::microphone);
    const bool isVideoMissing = isMissing(AVMediaType::video, ZVAuthorizationStatus::camera);
    if (isAudioMissing && isVideoMissing) {
        failForMissing("video and audio", "video and audio, both camera and microphone access is required", logger);
    }
    if (isAudioMissing) {
        failForMissing("audio", "audio, microphone access is required", logger);
    }
    if (isVideoMissing) {
        failForMissing("video", "video, camera access is required", logger);
    }
    logger.trace("Necessary permissions are granted.");
}

CaptureDevice requireCaptureDevice(const CaptureDeviceRole& role, const std::string& id, const Logger& logger) {
    const PoolBlockingScope blocking;
    auto device = Platform::current()->captureDevices->deviceWithUniqueID(id);
    if (!device) {
        logger.error("Failed to initialize AVCaptureDevice, got nil.", [&] {
            return LogMetadata{{std::string(role.idKey), id}};
        });
        role.explainAbsence(id, logger);
        throw noDeviceError(role, id);
    }
    logger.debug(fmt::format("Initialized {}AVCaptureDevice.", role.adjective), [&] { return metadataOf(*device); });
    return {role, std::move(device)};
}

AVCaptureDeviceInput openCaptureDevice(const CaptureDevice& device, const Logger& logger) {
    try {
        return Platform::current()->captureDevices->makeDeviceInput(device.device);
    } catch (...) {
        const std::exception_ptr error = std::current_exception();
        logger.error("Failed to open AVCaptureDevice.", errorMetadata(error));
        throw noDeviceError(device.role, device.device->uniqueID(), localizedDescription(error));
    }
}

}  // namespace zorvane
