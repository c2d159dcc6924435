#include "Zorvane/Internal/Recorders/AudioStreamRecorder.hpp"

#include <memory>
#include <utility>

namespace zorvane {

AudioStreamRecorder::AudioStreamRecorder(std::string id, const std::string& microphoneID,
                                         ZVSchemaItem::SampleCallback callback, const RecorderContext& context)
    : id_(std::move(id)), logger_(context.logger.withFile(id_)) {
    logger_.trace("Initializing.");
    const auto microphone = requireMicrophone(microphoneID, logger_);
    const AudioSamplePathTraits traits{.activity = "streaming",
                                       .startMessage = AudioSamplePathTraits::StartMessage::trace};
    auto path = std::make_unique<AudioSamplePath>(std::make_unique<HostAudioSampleSink>(std::move(callback), logger_),
                                                  context.recordingInterval, logger_, traits);
    capture_.emplace(microphone, DispatchQueue::serial("AudioStreamRecorderSampleBufferQueue"), std::move(path),
                     logger_, context.onNotice);
    logger_.info("Initialized.");
}

Task<> AudioStreamRecorder::prepare() {
    logger_.trace("Preparing.");
    co_await capture_->prepare();
    logger_.info("Prepared.");
}

Task<> AudioStreamRecorder::cancel() {
    capture_->cancel();
    co_return;
}

Task<std::vector<ZVBundleInfo::FileAsset>> AudioStreamRecorder::finish() {
    logger_.trace("Finishing.");
    co_await capture_->finish();
    co_return std::vector<ZVBundleInfo::FileAsset>();
}

RecorderStatistics AudioStreamRecorder::statistics() const {
    RecorderStatistics statistics;
    statistics.soundLevels.push_back(capture_->soundLevel());
    return statistics;
}

}  // namespace zorvane
