#include "Zorvane/Internal/Recorders/DeviceMovie.hpp"

#include <chrono>
#include <utility>

#include "Zorvane/Internal/Concurrency/Executor.hpp"

namespace zorvane {
namespace {

constexpr AudioSamplePathTraits soundTraits{.flushInterval = std::chrono::seconds(1),
                                            .flushTolerance = std::chrono::milliseconds(100)};

MasterPlaylist masterPlaylist(const OutputSettings& settings) {
    return withPictures(soundPlaylist(settings.audio, "Microphone"), settings.video, "Camera");
}

}  // namespace

DeviceMovie::DeviceMovie(std::string_view recorderName, const Logger& logger, const RecorderContext& context)
    : recorderName_(recorderName),
      logger_(logger),
      context_(context),
      capture_(DeviceCapture::Media::soundAndPictures, soundTraits,
               DispatchQueue::serial(recorderName_ + ".SampleBufferQueue"), logger_, context_) {}

void DeviceMovie::open(const OutputDescription& outputDescription, const OutputSettings& settings) {
    const PoolBlockingScope blocking;
    logger_.trace("Setting up AssetWriter.");
    const std::vector<AVMediaType> media{AVMediaType::audio, AVMediaType::video};
    auto writers = makeOutputAssetWriters(outputDescription, masterPlaylist(settings), logger_, context_.onNotice);
    output_.emplace(std::move(writers), media, recorderName_ + ".StartingQueue", logger_, context_.onAbort);
    const auto audioInput = output_->addAudioInput(settings.audio);
    const auto videoInput = output_->addVideoInput(settings.video);
    capture_.connect(*output_, audioInput, videoInput);
    output_->startWriting();
    logger_.debug("AVAssetWriter ready.");
}

Task<std::vector<ZVBundleInfo::FileAsset>> DeviceMovie::finish(ZVBundleInfo::FileAssetType type) {
    logger_.trace("Finishing.");
    co_await capture_.finish();
    std::vector<ZVBundleInfo::FileAsset> assets = co_await output_->finish(type, context_.recordingInterval);
    logger_.debug("Finished.");
    co_return assets;
}

}  // namespace zorvane
