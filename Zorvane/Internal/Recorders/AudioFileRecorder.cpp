#include "Zorvane/Internal/Recorders/AudioFileRecorder.hpp"

#include <memory>
#include <utility>

#include "Zorvane/Internal/Recorders/OutputSettings.hpp"

namespace zorvane {

AudioFileRecorder::AudioFileRecorder(std::string id, const OutputDescription& outputDescription,
                                     const std::string& microphoneID, const RecorderContext& context)
    : id_(std::move(id)), logger_(context.logger.withFile(id_)), recordingInterval_(context.recordingInterval) {
    logger_.trace("Initializing.");
    const auto microphone = requireMicrophone(microphoneID, logger_);
    const AVAudioSettings settings = resolveAudioSettings(microphone->activeFormat(), logger_);
    const std::vector<AVMediaType> media{AVMediaType::audio};
    auto writers =
        makeOutputAssetWriters(outputDescription, soundPlaylist(settings, "Microphone"), logger_, context.onNotice);
    output_.emplace(std::move(writers), media, "AudioFileRecorder.StartingQueue", logger_, context.onAbort);
    const auto audioInput = output_->addAudioInput(settings);
    const AudioSamplePathTraits traits{.startMessage = AudioSamplePathTraits::StartMessage::trace};
    auto path = std::make_unique<AudioSamplePath>(output_->makeSink(audioInput), recordingInterval_, logger_, traits);
    capture_.emplace(microphone, DispatchQueue::serial("AudioFileRecorder.SampleBufferQueue"), std::move(path), logger_,
                     context.onNotice);
    output_->startWriting();
    logger_.info("Initialized.");
}

Task<> AudioFileRecorder::prepare() {
    logger_.trace("Preparing.");
    co_await capture_->prepare();
    logger_.info("Prepared.");
}

Task<> AudioFileRecorder::cancel() {
    capture_->cancel();
    co_return;
}

Task<std::vector<ZVBundleInfo::FileAsset>> AudioFileRecorder::finish() {
    logger_.trace("Finishing.");
    co_await capture_->finish();
    co_return co_await output_->finish(ZVBundleInfo::FileAssetType::audio, recordingInterval_);
}

RecorderStatistics AudioFileRecorder::statistics() const {
    RecorderStatistics statistics;
    statistics.soundLevels.push_back(capture_->soundLevel());
    return statistics;
}

}  // namespace zorvane
