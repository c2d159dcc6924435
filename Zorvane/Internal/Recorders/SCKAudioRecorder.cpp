#include "Zorvane/Internal/Recorders/SCKAudioRecorder.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <atomic>
#include <utility>

#include "Zorvane/Internal/LogPieces.hpp"
#include "Zorvane/Internal/Recorders/OutputSettings.hpp"
#include "Zorvane/Internal/Recorders/StreamCapture.hpp"
#include "Zorvane/Internal/ShareableContent.hpp"
#include "Zorvane/Platform/Platform.hpp"
#include "Zorvane/Platform/ScreenCaptureKit/SCScreenCapture.hpp"
#include "Zorvane/ZVAuthorizationStatus.hpp"
#include "Zorvane/ZVError.hpp"

namespace zorvane {
namespace {

constexpr double firstSampleTimeout = 3.0;  // seconds

void requireScreenCapturePermission(const Logger& logger) {
    if (!ZVAuthorizationStatus::screenRecording()) {
        logger.error("Missing required screen capture permissions. See ZVAuthorizationStatus.");
        throw ZVError::badOperation(
            "Screen capture permission is required to record system audio. See ZVAuthorizationStatus.");
    }
}

bool isOfApplications(const SCContentFilter& filter) {
    return filter.kind == SCContentFilterKind::includingApplications;
}

/// What is listened to; empty for all sound of the system.
std::string applicationNames(const SCContentFilter& filter) {
    std::vector<std::string> names;
    if (isOfApplications(filter)) {
        for (const SCRunningApplication& application : filter.applications) {
            names.push_back(application.applicationName);
        }
    }
    return fmt::format("{}", fmt::join(names, ", "));
}

/// A process that isn't there is neither recorded nor left out, if it comes to play later.
void warnOfMissing(std::vector<std::int32_t> processIDs, const std::vector<SCRunningApplication>& found,
                   const Logger& logger) {
    std::erase_if(processIDs, [&](std::int32_t processID) {
        return std::ranges::count(found, processID, &SCRunningApplication::processID) > 0;
    });
    if (!processIDs.empty()) {
        logger.warning("No running application has this process id, it is passed over.", [&] {
            return LogMetadata{{"processIDs", fmt::format("{}", fmt::join(processIDs, ", "))}};
        });
    }
}

CMFormatDescription soundFormat(const SCStreamConfiguration& configuration, const Logger& logger) {
    if (!(configuration.sampleRate > 0) || configuration.channelCount == 0) {
        logger.error("Can't create AVAudioFormat.");
        throw ZVError::internalError("Can't create AVAudioFormat.");
    }
    CMFormatDescription description;
    description.mediaType = CMMediaType::audio;
    description.audioFormat = AVAudioFormat{.commonFormat = AVAudioCommonFormat::float32,
                                            .sampleRate = configuration.sampleRate,
                                            .channelCount = configuration.channelCount};
    return description;
}

}  // namespace

/// The receiver and the delegate of the stream, which holds it weakly.
class SCKAudioRecorder::StreamCoordinator final : public SCStreamOutput, public SCStreamDelegate {
  public:
    StreamCoordinator(std::unique_ptr<AudioSamplePath> audioPath, SourceNotices notices,
                      StopErrorHandler stopErrorHandler, const Logger& logger)
        : path(std::move(audioPath)),
          notices_(std::move(notices)),
          stopErrorHandler_(std::move(stopErrorHandler)),
          logger_(logger) {}

    void stream(SCStream& stream, const CMSampleBuffer& sampleBuffer, SCStreamOutputType type) override {
        if (!sampleBuffer.isValid()) {
            return;
        }
        if (type == SCStreamOutputType::audio) {
            path->process(sampleBuffer, stream.synchronizationClock());
        } else if (type != SCStreamOutputType::screen && !didLogUnknownOutputWarning_.exchange(true)) {
            logger_.warning("Got data of unknown type, ignoring.", [&] {
                return LogMetadata{{"type", fmt::format("{}", static_cast<int>(type))}};
            });
        }
    }
    void streamDidStopWithError(SCStream&, std::exception_ptr error) override { stopErrorHandler_(std::move(error)); }
    void streamDidBecomeInactive(SCStream&, std::exception_ptr reason) override { notices_.interrupted(reason); }
    void streamDidBecomeActive(SCStream&) override { notices_.resumed(); }

    const std::unique_ptr<AudioSamplePath> path;

  private:
    const SourceNotices notices_;
    const StopErrorHandler stopErrorHandler_;
    const Logger logger_;
    std::atomic<bool> didLogUnknownOutputWarning_{false};
};

SCKAudioRecorder::SCKAudioRecorder(SCKAudioRecorderParameters parameters)
    : id_(parameters.id),
      logger_(parameters.context.logger.withFile(id_)),
      recordingInterval_(parameters.context.recordingInterval),
      audioSampleBufferQueue_(DispatchQueue::serial("SCKAudioRecorder.AudioSampleBufferQueue")),
      levelSource_(isOfApplications(parameters.filter) ? "Application Audio" : "System Audio"),
      levelName_(applicationNames(parameters.filter)) {
    logger_.trace("Initializing.");
    requireScreenCapturePermission(logger_);
    SCStreamConfiguration configuration;
    configuration.capturesAudio = true;
    configuration.excludesCurrentProcessAudio = parameters.excludeCurrentProcess;
    auto path = setUpWriting(parameters, configuration);
    const std::string& source = levelName_.empty() ? levelSource_ : levelName_;
    coordinator_ = std::make_shared<StreamCoordinator>(
        std::move(path), SourceNotices(source, AVMediaType::audio, parameters.context.onNotice, logger_),
        makeStopErrorHandler(logger_, parameters.context.onAbort), logger_);
    setUpStream(parameters, configuration);
    output_->startWriting();
    logger_.info("Initialized.");
}

SCKAudioRecorder::~SCKAudioRecorder() = default;

std::unique_ptr<AudioSamplePath> SCKAudioRecorder::setUpWriting(const SCKAudioRecorderParameters& parameters,
                                                                const SCStreamConfiguration& configuration) {
    const AVAudioSettings settings = resolveAudioSettings(soundFormat(configuration, logger_), logger_);
    const std::vector<AVMediaType> media{AVMediaType::audio};
    auto writers = makeOutputAssetWriters(parameters.outputDescription, soundPlaylist(settings, levelSource_), logger_,
                                          parameters.context.onNotice);
    output_.emplace(std::move(writers), media, "SCKAudioRecorder.StartingQueue", logger_, parameters.context.onAbort);
    const auto audioInput = output_->addAudioInput(settings, "Can't add input to asset writer.");
    const AudioSamplePathTraits traits{.startMessage = AudioSamplePathTraits::StartMessage::debug};
    auto path = std::make_unique<AudioSamplePath>(recordingInterval_, logger_, traits);
    path->connect(output_->makeSink(audioInput));
    return path;
}

void SCKAudioRecorder::setUpStream(const SCKAudioRecorderParameters& parameters,
                                   const SCStreamConfiguration& configuration) {
    stream_ = Platform::current()->screenCapture->makeStream(parameters.filter, configuration, coordinator_);
    try {
        stream_->addStreamOutput(coordinator_, SCStreamOutputType::audio, audioSampleBufferQueue_);
    } catch (...) {
        logger_.error("Failed to add stream outputs.", errorMetadata(std::current_exception()));
        throw;
    }
    logger_.debug("Configured SCStream.", [&] {
        return LogMetadata{{"filter", parameters.filter.debugDescription()},
                           {"configuration", configuration.debugDescription()}};
    });
}

Task<> SCKAudioRecorder::prepare() {
    logger_.trace("Preparing.");
    co_await startCapture(*stream_, logger_);
    try {
        co_await coordinator_->path->waitForSample(firstSampleTimeout, noSystemAudioError());
    } catch (const ZVCancelled&) {
        throw;
    } catch (...) {
        logger_.error("No samples received from ScreenCaptureKit, timed out.", errorMetadata(std::current_exception()));
        throw;
    }
    logger_.info("Prepared.");
}

Task<> SCKAudioRecorder::cancel() {
    co_await stopCapture(*stream_, logger_);
}

Task<std::vector<ZVBundleInfo::FileAsset>> SCKAudioRecorder::finish() {
    logger_.trace("Finishing.");
    co_await coordinator_->path->waitForEnd();
    const std::exception_ptr stopError = co_await stopCapture(*stream_, logger_);
    co_await coordinator_->path->flush();
    std::vector<ZVBundleInfo::FileAsset> files =
        co_await output_->finish(ZVBundleInfo::FileAssetType::systemAudio, recordingInterval_);
    if (stopError) {
        std::rethrow_exception(stopError);  // only now: the file is closed all the same
    }
    co_return files;
}

RecorderStatistics SCKAudioRecorder::statistics() const {
    const SoundMeter::Level level = coordinator_->path->level();
    RecorderStatistics statistics;
    statistics.soundLevels.push_back({levelSource_, levelName_, level.peak, level.rms});
    return statistics;
}

Task<SCContentFilter> createContentFilter(std::optional<std::vector<std::int32_t>> includedProcessIDs,
                                          std::vector<std::int32_t> excludedProcessIDs, Logger logger) {
    SCShareableContent content =
        co_await ShareableContent::retrieve(ShareableContentError::Case::timeoutRecordSystemAudio);
    if (content.displays.empty()) {
        logger.error("No display available");
        throw ZVError::internalError("No display available");
    }
    const std::vector<std::int32_t>& listed = includedProcessIDs ? *includedProcessIDs : excludedProcessIDs;
    std::erase_if(content.applications, [&](const SCRunningApplication& application) {
        return std::ranges::count(listed, application.processID) == 0;
    });
    warnOfMissing(listed, content.applications, logger);
    if (includedProcessIDs && content.applications.empty()) {
        const std::string message =
            fmt::format("SystemAudio: None of the includedProcessIds can be found, cannot record audio {}",
                        fmt::join(listed, ", "));
        logger.error(message);
        throw ZVError::internalError(message,
                                     fmt::format("No application with a window or with sound is running as process {}.",
                                                 fmt::join(listed, ", ")));
    }
    SCContentFilter filter;
    filter.kind =
        includedProcessIDs ? SCContentFilterKind::includingApplications : SCContentFilterKind::excludingApplications;
    filter.display = content.displays.front();
    filter.applications = std::move(content.applications);
    co_return filter;
}

}  // namespace zorvane
