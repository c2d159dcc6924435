#include "Zorvane/Internal/Recorders/AudioFileRecorder.hpp"

#include <utility>

#include "Zorvane/Internal/Recorders/OutputSettings.hpp"

namespace zorvane {

AudioFileRecorder::AudioFileRecorder(std::string id, const OutputDescription& outputDescription,
                                     std::string microphoneID, const RecorderContext& context)
    : id_(std::move(id)),
      logger_(context.logger.withFile(id_)),
      recordingInterval_(context.recordingInterval),
      microphoneID_(std::move(microphoneID)),
      capture_(DeviceCapture::Media::sound, {.startMessage = AudioSamplePathTraits::StartMessage::trace},
               DispatchQueue::serial("AudioFileRecorder.SampleBufferQueue"), logger_, context) {
    logger_.trace("Initializing.");
    requireCaptureAccess({AVMediaType::audio}, logger_);
    const CaptureDevice microphone = requireCaptureDevice(CaptureDeviceRole::aloneMicrophone, microphoneID_, logger_);
    const AVAudioSettings settings = resolveAudioSettings(microphone.device->activeFormat(), logger_);
    const std::vector<AVMediaType> media{AVMediaType::audio};
    auto writers =
        makeOutputAssetWriters(outputDescription, soundPlaylist(settings, "Microphone"), logger_, context.onNotice);
    output_.emplace(std::move(writers), media, "AudioFileRecorder.StartingQueue", logger_, context.onAbort);
    capture_.connect(output_->makeSink(output_->addAudioInput(settings)));
    capture_.configure({microphone});
    output_->startWriting();
    logger_.info("Initialized.");
}

Task<> AudioFileRecorder::prepare() {
    logger_.trace("Preparing.");
    capture_.startRunning();
    co_await capture_.waitForMicrophone(microphoneID_);
    logger_.info("Prepared.");
}

Task<> AudioFileRecorder::cancel() {
    capture_.cancel();
    co_return;
}

Task<std::vector<ZVBundleInfo::FileAsset>> AudioFileRecorder::finish() {
    logger_.trace("Finishing.");
    co_await capture_.finish();
    co_return co_await output_->finish(ZVBundleInfo::FileAssetType::audio, recordingInterval_);
}

}  // namespace zorvane
