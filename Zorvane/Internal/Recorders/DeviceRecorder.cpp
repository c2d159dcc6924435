#include "Zorvane/Internal/Recorders/DeviceRecorder.hpp"

#include <utility>

namespace zorvane {

DeviceRecorder::DeviceRecorder(std::string id, OutputDescription outputDescription, std::string deviceID,
                               const RecorderContext& context)
    : id_(std::move(id)),
      outputDescription_(std::move(outputDescription)),
      deviceID_(std::move(deviceID)),
      logger_(context.logger.withFile(id_)),
      movie_("DeviceRecorder", logger_, context) {
    logger_.trace("Initializing.");
    requireCaptureAccess({AVMediaType::video}, logger_);
    logger_.info("Initialized.");
}

Task<> DeviceRecorder::prepare() {
    logger_.trace("Preparing.");
    const CaptureDevice phone = startCapture();
    logger_.trace("Waiting for first video frame.");
    const CMSampleBuffer firstPicture = co_await movie_.capture().waitForPhone(deviceID_);
    logger_.debug("Got first video frame.");
    openMovie(*phone.device, firstPicture);
    logger_.info("Prepared.");
}

CaptureDevice DeviceRecorder::startCapture() {
    logger_.trace("Initializing AVCaptureDevice.");
    CaptureDevice phone = requireCaptureDevice(CaptureDeviceRole::phone, deviceID_, logger_);
    movie_.capture().configure({phone});
    movie_.capture().startRunning();
    return phone;
}

void DeviceRecorder::openMovie(const AVCaptureDevice& device, const CMSampleBuffer& firstPicture) {
    logger_.trace("Resolving settings using AVOutputSettingsAssistant.");
    if (!firstPicture.formatDescription()) {
        constexpr std::string_view message = "Missing formatDescription in first sample buffer.";
        logger_.error(message);
        throw ZVError::internalError(message);
    }
    const CMVideoDimensions size = firstPicture.formatDescription()->dimensions;
    CMFormatDescription format = device.activeFormat();
    format.mediaType = CMMediaType::video;
    format.dimensions = size;
    OutputSettings settings = resolveCameraSettings(
        {.video = std::move(format), .minFrameDuration = device.activeVideoMinFrameDuration(), .audio = std::nullopt},
        logger_);
    settings.video.width = size.width;
    settings.video.height = size.height;
    movie_.open(outputDescription_, settings);
}

Task<> DeviceRecorder::cancel() {
    movie_.cancel();
    co_return;
}

Task<std::vector<ZVBundleInfo::FileAsset>> DeviceRecorder::finish() {
    return movie_.finish(ZVBundleInfo::FileAssetType::appleDevice);
}

}  // namespace zorvane
