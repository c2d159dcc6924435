#include "Zorvane/Internal/Recorders/ScreenRecorder.hpp"

#include <fmt/format.h>

#include <utility>

#include "Zorvane/Internal/LogPieces.hpp"
#include "Zorvane/Internal/Recorders/OutputSettings.hpp"
#include "Zorvane/Platform/Platform.hpp"
#include "Zorvane/Platform/ScreenCaptureKit/SCScreenCapture.hpp"
#include "Zorvane/ZVAuthorizationStatus.hpp"
#include "Zorvane/ZVError.hpp"

namespace zorvane {
namespace {

constexpr int fallbackScaleFactor = 2;  // of a display without a mode
constexpr std::size_t queueDepth = 6;   // pictures under way between the screen and the encoder

void requireScreenCapturePermission(const Logger& logger) {
    if (!ZVAuthorizationStatus::screenRecording()) {
        logger.error("Missing required screen capture permissions. See ZVAuthorizationStatus.");
        throw ZVError::badOperation(
            "Screen capture permission is required to record (a part of) the display. See ZVAuthorizationStatus.");
    }
    logger.trace("Necessary permissions are granted.");
}

int scaleFactorOf(const SCDisplay& display) {
    const auto mode = Platform::current()->displays->displayMode(display.displayID);
    return mode && mode->width > 0 ? static_cast<int>(mode->pixelWidth / mode->width) : fallbackScaleFactor;
}

CGSize sourceSizeOf(const ResolvedContentFilter& content) {
    return content.cropRect ? content.cropRect->size : content.display.frame.size;
}

OutputSettings screenOutputSettings(const ResolvedContentFilter& content, int scaleFactor, RecordMode mode,
                                    const Logger& logger) {
    const CMVideoDimensions size = downsizedVideoSize(sourceSizeOf(content), scaleFactor, mode);
    const CMFormatDescription sourceVideoFormat{
        .mediaType = CMMediaType::video, .codec = videoCodecType(mode), .dimensions = size};
    logger.trace("Resolving settings using AVOutputSettingsAssistant.");
    OutputSettings settings = resolveOutputSettings(settingsPreset(mode), sourceVideoFormat, logger);
    settings.video.width = size.width;
    settings.video.height = size.height;
    settings.video.colorProperties = videoColorProperties(mode);
    settings.video.compressionProperties.allowFrameReordering = false;
    return settings;
}

MasterPlaylist masterPlaylist(const OutputSettings& settings, bool captureAudio) {
    MasterPlaylist sound = captureAudio ? soundPlaylist(settings.audio, "System Audio") : MasterPlaylist();
    return withPictures(std::move(sound), settings.video, "Screen Recording");
}

SCStreamConfiguration streamConfiguration(const ScreenRecorderParameters& parameters, int scaleFactor) {
    const CGSize source = sourceSizeOf(parameters.content);
    SCStreamConfiguration configuration;
    configuration.showsCursor = parameters.showsCursor;
    configuration.capturesAudio = parameters.captureAudio;
    configuration.queueDepth = queueDepth;
    configuration.sourceRect = parameters.content.cropRect;
    configuration.width = static_cast<std::int32_t>(source.width) * scaleFactor;
    configuration.height = static_cast<std::int32_t>(source.height) * scaleFactor;
    configuration.pixelFormat = streamPixelFormat(parameters.mode);
    configuration.colorSpaceName = streamColorSpace(parameters.mode);
    return configuration;
}

}  // namespace

ScreenRecorder::ScreenRecorder(ScreenRecorderParameters parameters)
    : id_(parameters.id),
      logger_(parameters.logger.withFile(id_)),
      recordingInterval_(parameters.recordingInterval),
      screenSampleBufferQueue_(DispatchQueue::serial("ScreenRecorder.ScreenSampleBufferQueue")),
      audioSampleBufferQueue_(DispatchQueue::serial("ScreenRecorder.AudioSampleBufferQueue")) {
    logger_.trace("Initializing.");
    requireScreenCapturePermission(logger_);
    const int scaleFactor = scaleFactorOf(parameters.content.display);
    setUpWriting(parameters, scaleFactor);
    setUpStream(parameters, scaleFactor);
    logger_.info("Initialized.");
}

void ScreenRecorder::setUpWriting(const ScreenRecorderParameters& parameters, int scaleFactor) {
    logger_.trace("Resolving output settings.");
    const OutputSettings settings = screenOutputSettings(parameters.content, scaleFactor, parameters.mode, logger_);
    logger_.trace("Setting up AssetWriter.");
    const std::vector<AVMediaType> media{AVMediaType::audio, AVMediaType::video};
    auto writers = makeOutputAssetWriters(
        parameters.outputDescription, masterPlaylist(settings, parameters.captureAudio), logger_, parameters.onNotice);
    output_.emplace(std::move(writers), media, "ScreenRecorder.StartingQueue", logger_, parameters.onAbort);
    inputs_.video = output_->addVideoInput(settings.video);
    if (parameters.captureAudio) {
        inputs_.audio = output_->addAudioInput(settings.audio);
    }
    output_->startWriting();
    logger_.debug("AVAssetWriter ready.", [&] {
        return LogMetadata{{"captureAudio", fmt::format("{}", parameters.captureAudio)}};
    });
}

void ScreenRecorder::setUpStream(const ScreenRecorderParameters& parameters, int scaleFactor) {
    logger_.trace("Configuring SCStream.");
    const SCStreamConfiguration configuration = streamConfiguration(parameters, scaleFactor);
    coordinator_ =
        ScreenStreamCoordinator::make(logger_, recordingInterval_, *output_, inputs_.video, inputs_.audio,
                                      SourceNotices("System Audio", AVMediaType::audio, parameters.onNotice, logger_),
                                      makeStopErrorHandler(logger_, parameters.onAbort));
    stream_ = Platform::current()->screenCapture->makeStream(parameters.content.filter, configuration, coordinator_);
    addStreamOutputs(configuration);
    logger_.debug("Configured SCStream.", [&] {
        return LogMetadata{{"filter", parameters.content.filter.debugDescription()},
                           {"captureAudio", fmt::format("{}", parameters.captureAudio)},
                           {"configuration", configuration.debugDescription()}};
    });
}

void ScreenRecorder::addStreamOutputs(const SCStreamConfiguration& configuration) {
    try {
        stream_->addStreamOutput(coordinator_, SCStreamOutputType::screen, screenSampleBufferQueue_);
        if (configuration.capturesAudio) {
            stream_->addStreamOutput(coordinator_, SCStreamOutputType::audio, audioSampleBufferQueue_);
        }
    } catch (...) {
        logger_.error("Failed to add stream outputs.", errorMetadata(std::current_exception()));
        throw;
    }
}

Task<> ScreenRecorder::prepare() {
    logger_.trace("Preparing.");
    co_await startCapture(*stream_, logger_);
    try {
        co_await coordinator_->waitForSampleBuffers();
    } catch (const ZVCancelled&) {
        throw;
    } catch (...) {
        logger_.error("No samples received from ScreenCaptureKit, timed out.", errorMetadata(std::current_exception()));
        throw;
    }
    logger_.info("Prepared.");
}

Task<> ScreenRecorder::cancel() {
    coordinator_->cancelRepeats();
    co_await stopCapture(*stream_, logger_);
    coordinator_->letGoOfPictures();
}

Task<std::vector<ZVBundleInfo::FileAsset>> ScreenRecorder::finish() {
    logger_.trace("Finishing.");
    co_await coordinator_->waitForAudioEnd();
    co_await cancel();
    coordinator_->finishVideo();
    co_await coordinator_->flushAudio();
    co_return co_await output_->finish(ZVBundleInfo::FileAssetType::screen, recordingInterval_);
}

}  // namespace zorvane
