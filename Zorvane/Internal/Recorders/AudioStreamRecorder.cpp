#include "Zorvane/Internal/Recorders/AudioStreamRecorder.hpp"

#include <memory>
#include <utility>

namespace zorvane {

AudioStreamRecorder::AudioStreamRecorder(std::string id, std::string microphoneID,
                                         ZVSchemaItem::SampleCallback callback, const RecorderContext& context)
    : id_(std::move(id)),
      logger_(context.logger.withFile(id_)),
      microphoneID_(std::move(microphoneID)),
      capture_(DeviceCapture::Media::sound,
               {.activity = "streaming", .startMessage = AudioSamplePathTraits::StartMessage::trace},
               DispatchQueue::serial("AudioStreamRecorderSampleBufferQueue"), logger_, context) {
    logger_.trace("Initializing.");
    requireCaptureAccess({AVMediaType::audio}, logger_);
    const CaptureDevice microphone = requireCaptureDevice(CaptureDeviceRole::aloneMicrophone, microphoneID_, logger_);
    capture_.connect(std::make_unique<HostAudioSampleSink>(std::move(callback), logger_));
    capture_.configure({microphone});
    logger_.info("Initialized.");
}

Task<> AudioStreamRecorder::prepare() {
    logger_.trace("Preparing.");
    capture_.startRunning();
    co_await capture_.waitForMicrophone(microphoneID_);
    logger_.info("Prepared.");
}

Task<> AudioStreamRecorder::cancel() {
    capture_.cancel();
    co_return;
}

Task<std::vector<ZVBundleInfo::FileAsset>> AudioStreamRecorder::finish() {
    logger_.trace("Finishing.");
    co_await capture_.finish();
    co_return std::vector<ZVBundleInfo::FileAsset>();
}

}  // namespace zorvane
