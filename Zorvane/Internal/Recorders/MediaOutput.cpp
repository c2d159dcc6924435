#include "Zorvane/Internal/Recorders/MediaOutput.hpp"

#include <cmath>
#include <utility>

#include "Zorvane/Internal/FileURL.hpp"
#include "Zorvane/Internal/LogPieces.hpp"
#include "Zorvane/Internal/OutputDescription.hpp"
#include "Zorvane/Internal/Recorders/MultipleStreamsOutputAssetWriters.hpp"
#include "Zorvane/ZVError.hpp"

namespace zorvane {
namespace {

constexpr std::int32_t nanoseconds = 1'000'000'000;

// Of pictures whose settings don't tell their size.
constexpr std::int32_t fallbackWidth = 1920;
constexpr std::int32_t fallbackHeight = 1080;

std::string_view errorMessage(AVMediaType mediaType) {
    return mediaType == AVMediaType::audio ? "Audio AVAssetWriter reported an error, aborting."
                                           : "Video AVAssetWriter reported an error, aborting.";
}

}  // namespace

MediaOutput::MediaOutput(std::shared_ptr<OutputAssetWriters> writers, const std::vector<AVMediaType>& media,
                         std::string startingQueueLabel, const Logger& logger, const AbortHandler& onAbort)
    : logger_(logger),
      writers_(std::move(writers)),
      session_(std::make_shared<WriterSession>(writers_, std::move(startingQueueLabel))) {
    for (const AVMediaType mediaType : media) {
        observeErrors(mediaType, onAbort);
    }
}

AVAssetWriter& MediaOutput::writer(AVMediaType mediaType) const {
    return mediaType == AVMediaType::audio ? writers_->audioAssetWriter() : writers_->videoAssetWriter();
}

void MediaOutput::observeErrors(AVMediaType mediaType, const AbortHandler& onAbort) {
    auto report = [logger = logger_, onAbort, mediaType](const std::exception_ptr& error) {
        logger.error(errorMessage(mediaType), errorMetadata(error));
        onAbort(AbortSignal::interrupted(error));
    };
    errorObservations_.push_back(writer(mediaType).observeError(std::move(report)));
}

std::shared_ptr<AVAssetWriterInput> MediaOutput::addVideoInput(const AVVideoSettings& settings) {
    return add(std::make_shared<AVAssetWriterInput>(settings), "Can't add video input to asset writer.");
}

std::shared_ptr<AVAssetWriterInput> MediaOutput::addAudioInput(const AVAudioSettings& settings,
                                                               std::string_view refusal) {
    return add(std::make_shared<AVAssetWriterInput>(settings), refusal);
}

std::shared_ptr<AVAssetWriterInput> MediaOutput::add(std::shared_ptr<AVAssetWriterInput> input,
                                                     std::string_view refusal) {
    AVAssetWriter& target = writer(input->mediaType());
    input->setExpectsMediaDataInRealTime(true);
    if (!target.canAdd(*input)) {
        logger_.error(refusal);
        throw ZVError::internalError(refusal);
    }
    target.add(input);
    inputs_.push_back(input);
    return input;
}

std::unique_ptr<AudioSampleSink> MediaOutput::makeSink(std::shared_ptr<AVAssetWriterInput> audioInput) const {
    return std::make_unique<WriterAudioSampleSink>(std::move(audioInput), session_, writers_, logger_);
}

Task<std::vector<ZVBundleInfo::FileAsset>> MediaOutput::finish(ZVBundleInfo::FileAssetType type,
                                                               StableRecordingInterval interval) {
    endSession(std::move(interval));
    std::vector<ZVBundleInfo::FileAsset> assets;
    for (const std::filesystem::path& url : co_await writers_->finishWriting()) {
        ZVBundleInfo::FileAsset asset;
        asset.type = type;
        asset.filename = url.filename();
        assets.push_back(std::move(asset));
    }
    co_return assets;
}

void MediaOutput::endSession(StableRecordingInterval interval) {
    interval.refresh();
    if (std::isfinite(interval.recordFrom())) {
        session_->startIfNeeded(CMTime::fromSeconds(interval.recordFrom(), nanoseconds));
    }
    endSessions(*writers_, interval);
    for (const auto& input : inputs_) {
        input->markAsFinished();
    }
}

MasterPlaylist soundPlaylist(const AVAudioSettings& settings, std::string_view trackName) {
    return {.audioChannelsCount = settings.numberOfChannels.value_or(1),
            .audioTrackName = std::string(trackName),
            .audioCodecName = "mp4a.40.2"};
}

MasterPlaylist withPictures(MasterPlaylist playlist, const AVVideoSettings& settings, std::string_view trackName) {
    playlist.videoTrackName = trackName;
    playlist.videoCodecName = "avc1.42e00a";
    playlist.videoResolution = {settings.width > 0 ? settings.width : fallbackWidth,
                                settings.height > 0 ? settings.height : fallbackHeight};
    return playlist;
}

std::shared_ptr<OutputAssetWriters> makeOutputAssetWriters(const OutputDescription& description,
                                                           MasterPlaylist masterPlaylist, const Logger& logger,
                                                           const NoticeHandler& onNotice) {
    if (const auto* file = std::get_if<OutputDescription::SingleFile>(&description.form)) {
        auto writers = std::make_shared<SingleFileOutputAssetWriters>(file->url);
        logger.debug("AssetWriter for single file output ready.", [&] {
            return LogMetadata{{"output", absoluteURLString(file->url, Directory::no)}};
        });
        return writers;
    }
    const auto& streams = std::get<OutputDescription::MultipleStreams>(description.form);
    auto writers = std::make_shared<MultipleStreamsOutputAssetWriters>(streams, std::move(masterPlaylist), std::nullopt,
                                                                       logger, onNotice);
    logger.debug("AssetWriter for stream output ready.", [&] {
        return LogMetadata{{"directoryURL", absoluteURLString(streams.directoryURL, Directory::yes)},
                           {"filenamePrefix", streams.filenamePrefix}};
    });
    return writers;
}

}  // namespace zorvane
