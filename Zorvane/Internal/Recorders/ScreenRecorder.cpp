#include "Zorvane/Internal/Recorders/ScreenRecorder.hpp"

#include <fmt/format.h>

#include <utility>

#include "Zorvane/Internal/AVAssetWriterSafeCalls.hpp"
#include "Zorvane/Internal/Concurrency/Continuation.hpp"
#include "Zorvane/Internal/FileURL.hpp"
#include "Zorvane/Internal/LogPieces.hpp"
#include "Zorvane/Internal/Recorders/OutputSettings.hpp"
#include "Zorvane/Platform/Foundation/NSError.hpp"
#include "Zorvane/Platform/Platform.hpp"
#include "Zorvane/Platform/ScreenCaptureKit/SCScreenCapture.hpp"
#include "Zorvane/ZVAuthorizationStatus.hpp"
#include "Zorvane/ZVError.hpp"

namespace zorvane {
namespace {

constexpr int fallbackScaleFactor = 2;  // of a display without a mode
constexpr std::size_t queueDepth = 6;   // pictures under way between the screen and the encoder
constexpr std::int32_t nanoseconds = 1'000'000'000;

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

std::shared_ptr<OutputAssetWriters> makeWriters(const OutputDescription& description, const Logger& logger) {
    const auto* singleFile = std::get_if<OutputDescription::SingleFile>(&description.form);
    if (!singleFile) {
        throw ZVError::invalidConfiguration(
            "Segmented output of a screen recording isn't available in this version. "
            "Use a single file.");
    }
    auto writers = std::make_shared<SingleFileOutputAssetWriters>(singleFile->url);
    logger.debug("AssetWriter for single file output ready.", [&] {
        return LogMetadata{{"output", absoluteURLString(singleFile->url, Directory::no)}};
    });
    return writers;
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

bool isStreamError(const std::exception_ptr& error, SCStreamErrorCode code) {
    try {
        std::rethrow_exception(error);
    } catch (const NSError& platformError) {
        return platformError.domain() == SCStreamErrorDomain && platformError.code() == static_cast<int>(code);
    } catch (...) {
        return false;
    }
}

/// Sorts a stop that the user asked for from an interruption.
ScreenStreamCoordinator::StopErrorHandler makeStopHandler(const Logger& logger, const AbortHandler& onAbort) {
    return [logger, onAbort](std::exception_ptr error) {
        if (!error) {
            error = std::make_exception_ptr(
                ZVError::internalError("ScreenCaptureKit stopped without reporting any error information."));
        }
        if (isStreamError(error, SCStreamErrorCode::userStopped)) {
            logger.debug("ScreenCaptureKit stopped by user.");
            onAbort(AbortSignal::userStopped());
        } else {
            logger.debug("ScreenCaptureKit interrupted.", errorMetadata(error));
            onAbort(AbortSignal::interrupted(error));
        }
    };
}

/// Bridges a stream's completion handler to the awaiting coroutine.
SCStream::Completion resuming(Continuation<> continuation) {
    return [continuation = std::move(continuation)](std::exception_ptr error) {
        if (error) {
            continuation.resumeThrowing(std::move(error));
        } else {
            continuation.resume();
        }
    };
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
    outputAssetWriters_ = makeWriters(parameters.outputDescription, logger_);
    observeErrors(parameters.onAbort);
    inputs_.video = addRealTimeInput(outputAssetWriters_->videoAssetWriter(), settings.video, logger_);
    if (parameters.captureAudio) {
        inputs_.audio = addRealTimeInput(outputAssetWriters_->audioAssetWriter(), settings.audio, logger_);
    }
    outputAssetWriters_->startWriting();
    logger_.debug("AVAssetWriter ready.", [&] {
        return LogMetadata{{"captureAudio", fmt::format("{}", parameters.captureAudio)}};
    });
}

void ScreenRecorder::observeErrors(const AbortHandler& onAbort) {
    const auto observe = [&](AVAssetWriter& writer, const char* message) {
        auto report = [logger = logger_, onAbort, message](const std::exception_ptr& error) {
            logger.error(message, errorMetadata(error));
            onAbort(AbortSignal::interrupted(error));
        };
        errorObservations_.push_back(writer.observeError(std::move(report)));
    };
    observe(outputAssetWriters_->audioAssetWriter(), "Audio AVAssetWriter reported an error, aborting.");
    observe(outputAssetWriters_->videoAssetWriter(), "Video AVAssetWriter reported an error, aborting.");
}

void ScreenRecorder::setUpStream(const ScreenRecorderParameters& parameters, int scaleFactor) {
    logger_.trace("Configuring SCStream.");
    const SCStreamConfiguration configuration = streamConfiguration(parameters, scaleFactor);
    coordinator_ = ScreenStreamCoordinator::make(logger_, recordingInterval_, outputAssetWriters_, inputs_.video,
                                                 inputs_.audio, makeStopHandler(logger_, parameters.onAbort));
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
    auto [continuation, started] = makeContinuation();
    stream_->startCapture(resuming(std::move(continuation)));
    try {
        co_await std::move(started);
    } catch (const ZVCancelled&) {
        throw;
    } catch (...) {
        logger_.error("Failed to start capture.", errorMetadata(std::current_exception()));
        throw;
    }
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
    auto [continuation, stopped] = makeContinuation();
    stream_->stopCapture(resuming(std::move(continuation)));
    try {
        co_await std::move(stopped).ignoringCancellation();
    } catch (...) {
        const std::exception_ptr error = std::current_exception();
        if (isStreamError(error, SCStreamErrorCode::attemptToStopStreamState)) {
            logger_.info("ScreenCaptureKit stream has already been stopped.", [] {
                return LogMetadata{{"error", "SCStreamError.attemptToStopStreamState"}};
            });
        } else {
            logger_.warning("Failed to stop ScreenCaptureKit stream.", errorMetadata(error));
        }
    }
    coordinator_->letGoOfPictures();
}

Task<std::vector<ZVBundleInfo::FileAsset>> ScreenRecorder::finish() {
    logger_.trace("Finishing.");
    co_await cancel();
    coordinator_->finishVideo();
    co_await coordinator_->flushAudio();
    endSessions();
    std::vector<ZVBundleInfo::FileAsset> assets;
    for (const std::filesystem::path& url : co_await outputAssetWriters_->finishWriting()) {
        ZVBundleInfo::FileAsset asset;
        asset.type = ZVBundleInfo::FileAssetType::screen;
        asset.filename = url.filename();
        assets.push_back(std::move(asset));
    }
    co_return assets;
}

void ScreenRecorder::endSessions() {
    recordingInterval_.refresh();
    const CMTime endTime = CMTime::fromSeconds(recordingInterval_.recordUntil(), nanoseconds);
    safe_endSession(outputAssetWriters_->audioAssetWriter(), endTime);
    safe_endSession(outputAssetWriters_->videoAssetWriter(), endTime);
    if (inputs_.audio) {
        inputs_.audio->markAsFinished();
    }
    inputs_.video->markAsFinished();
}

}  // namespace zorvane
