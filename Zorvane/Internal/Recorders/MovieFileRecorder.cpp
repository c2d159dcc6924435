#include "Zorvane/Internal/Recorders/MovieFileRecorder.hpp"

#include <utility>

namespace zorvane {

MovieFileRecorder::MovieFileRecorder(std::string id, const OutputDescription& outputDescription,
                                     std::string microphoneID, std::string cameraID, const RecorderContext& context)
    : id_(std::move(id)),
      logger_(context.logger.withFile(id_)),
      microphoneID_(std::move(microphoneID)),
      cameraID_(std::move(cameraID)),
      movie_("MovieFileRecorder", logger_, context) {
    logger_.trace("Initializing.");
    requireCaptureAccess({AVMediaType::audio, AVMediaType::video}, logger_);
    logger_.trace("Initializing AVCaptureDevices.");
    const CaptureDevice microphone = requireCaptureDevice(CaptureDeviceRole::microphone, microphoneID_, logger_);
    const CaptureDevice camera = requireCaptureDevice(CaptureDeviceRole::camera, cameraID_, logger_);
    logger_.trace("Resolving settings using AVOutputSettingsAssistant.");
    const OutputSettings settings =
        resolveCameraSettings({.video = camera.device->activeFormat(),
                               .minFrameDuration = camera.device->activeVideoMinFrameDuration(),
                               .audio = microphone.device->activeFormat()},
                              logger_);
    movie_.open(outputDescription, settings);
    movie_.capture().configure({microphone, camera});
    logInitialized(*microphone.device, *camera.device, settings);
}

void MovieFileRecorder::logInitialized(const AVCaptureDevice& microphone, const AVCaptureDevice& camera,
                                       const OutputSettings& settings) const {
    logger_.info("Initialized.", [&] {
        return LogMetadata{
            {"microphoneID", microphoneID_},
            {"microphoneModelId", microphone.modelID()},
            {"microphoneLocalizedName", microphone.localizedName()},
            {"microphoneChannels", std::to_string(settings.audio.numberOfChannels.value_or(1))},
            {"cameraID", cameraID_},
            {"cameraModelId", camera.modelID()},
            {"cameraLocalizedName", camera.localizedName()},
            {"cameraActiveVideoMinFrameDuration", camera.activeVideoMinFrameDuration().logDescription()}};
    });
}

Task<> MovieFileRecorder::prepare() {
    logger_.trace("Preparing.");
    movie_.capture().startRunning();
    co_await movie_.capture().waitForMicrophone(microphoneID_);
    co_await movie_.capture().waitForCamera(cameraID_);
    logger_.info("Prepared.");
}

Task<> MovieFileRecorder::cancel() {
    movie_.cancel();
    co_return;
}

Task<std::vector<ZVBundleInfo::FileAsset>> MovieFileRecorder::finish() {
    return movie_.finish(ZVBundleInfo::FileAssetType::webcam);
}

}  // namespace zorvane
