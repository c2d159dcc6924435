#include "Zorvane/Internal/Recorders/ScreenStreamCoordinator.hpp"

#include <fmt/format.h>

#include <chrono>
#include <utility>

#include "Zorvane/Internal/Recorders/HostTimePlacement.hpp"

namespace zorvane {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr double firstSampleTimeout = 3.0;  // seconds
constexpr double repeatInterval = 1.0;      // seconds without a picture before the last one is repeated

ZVError noVideoError() {
    return ZVError::internalError("No video samples received from screen recording.",
                                  "No video from screen recording. If this problem persists, try rebooting your "
                                  "computer.");
}

}  // namespace

std::shared_ptr<ScreenStreamCoordinator> ScreenStreamCoordinator::make(
    const Logger& logger, const StableRecordingInterval& interval, const MediaOutput& output,
    std::shared_ptr<AVAssetWriterInput> videoInput, std::shared_ptr<AVAssetWriterInput> audioInput,
    SourceNotices audioNotices, StopErrorHandler stopErrorHandler) {
    std::shared_ptr<ScreenStreamCoordinator> coordinator(
        new ScreenStreamCoordinator(logger, interval, std::move(audioNotices), std::move(stopErrorHandler)));
    coordinator->connect(output, std::move(videoInput), std::move(audioInput));
    return coordinator;
}

ScreenStreamCoordinator::ScreenStreamCoordinator(const Logger& logger, const StableRecordingInterval& interval,
                                                 SourceNotices audioNotices, StopErrorHandler stopErrorHandler)
    : logger_(logger),
      interval_(interval),
      audioNotices_(std::move(audioNotices)),
      stopErrorHandler_(std::move(stopErrorHandler)),
      videoPath_(interval, logger),
      frameRepeater_(repeatInterval) {}

void ScreenStreamCoordinator::connect(const MediaOutput& output, std::shared_ptr<AVAssetWriterInput> videoInput,
                                      std::shared_ptr<AVAssetWriterInput> audioInput) {
    videoPath_.connect(output, std::move(videoInput));
    if (audioInput) {
        const AudioSamplePathTraits traits{.flushInterval = seconds(1), .flushTolerance = milliseconds(100)};
        audioPath_ = std::make_unique<AudioSamplePath>(interval_, logger_, traits);
        audioPath_->connect(output.makeSink(std::move(audioInput)));
    }
    frameRepeater_.setHandler([weakSelf = weak_from_this()](const CMSampleBuffer& sampleBuffer, CMTime time,
                                                            std::optional<CMTime> repeatAddedTime) {
        if (const auto self = weakSelf.lock()) {
            self->frameRepeaterHandler(sampleBuffer, time, repeatAddedTime);
        }
    });
}

Task<> ScreenStreamCoordinator::waitForSampleBuffers() {
    co_await videoPath_.waitForSample(firstSampleTimeout, noVideoError());
    if (audioPath_) {
        co_await audioPath_->waitForSample(firstSampleTimeout, noSystemAudioError());
    }
}

void ScreenStreamCoordinator::stream(SCStream& stream, const CMSampleBuffer& sampleBuffer, SCStreamOutputType type) {
    if (!sampleBuffer.isValid()) {
        return;
    }
    switch (type) {
        case SCStreamOutputType::screen:
            handleVideo(sampleBuffer, hostTimeOf(sampleBuffer, stream.synchronizationClock()));
            return;
        case SCStreamOutputType::audio:
            if (audioPath_) {
                audioPath_->process(sampleBuffer, stream.synchronizationClock());
            }
            return;
    }
    ignoreUnknownType(type);
}

void ScreenStreamCoordinator::handleVideo(const CMSampleBuffer& sampleBuffer, CMTime hostTime) {
    if (sampleBuffer.attachments().frameStatus != static_cast<std::int32_t>(SCFrameStatus::complete)) {
        return;
    }
    videoPath_.hold(sampleBuffer, hostTime);
    try {
        frameRepeater_.append(sampleBuffer, hostTime);
    } catch (const FrameRepeaterError&) {
        logger_.error("Frame repeater handler is missing, aborting.");
        stopErrorHandler_(std::current_exception());
    }
}

void ScreenStreamCoordinator::ignoreUnknownType(SCStreamOutputType type) {
    if (!didLogUnknownOutputWarning_.exchange(true)) {
        logger_.warning("Got data of unknown type, ignoring.", [&] {
            return LogMetadata{{"type", fmt::format("{}", static_cast<int>(type))}};
        });
    }
}

void ScreenStreamCoordinator::frameRepeaterHandler(const CMSampleBuffer& sampleBuffer, CMTime time,
                                                   std::optional<CMTime> repeatAddedTime) {
    if (repeatAddedTime) {
        logger_.debug("Repeating video frame.", [&] {
            return LogMetadata{{"after", fmt::format("{}", repeatAddedTime->seconds())}};
        });
        StableRecordingInterval interval = interval_;
        interval.refresh();
        if (interval.contains(time.seconds())) {
            framesRepeated_.fetch_add(1, std::memory_order_relaxed);
        }
    }
    try {
        videoPath_.append(sampleBuffer, time);
    } catch (...) {
        const std::exception_ptr error = std::current_exception();
        logger_.error("Failed to append video frame, aborting.", [&] {
            return LogMetadata{{"error", debugDescription(error)},
                               {"pts", sampleBuffer.presentationTimeStamp().logDescription()},
                               {"time", time.logDescription()},
                               {"repeatAddedTime", repeatAddedTime ? repeatAddedTime->logDescription() : "nil"}};
        });
        stopErrorHandler_(error);
    }
}

void ScreenStreamCoordinator::streamDidStopWithError(SCStream&, std::exception_ptr error) {
    stopErrorHandler_(std::move(error));
}

void ScreenStreamCoordinator::streamDidBecomeInactive(SCStream&, std::exception_ptr reason) {
    audioNotices_.interrupted(reason);
}

void ScreenStreamCoordinator::streamDidBecomeActive(SCStream&) {
    audioNotices_.resumed();
}

void ScreenStreamCoordinator::cancelRepeats() {
    frameRepeater_.cancel();
}

void ScreenStreamCoordinator::letGoOfPictures() {
    frameRepeater_.cancel();
    videoPath_.letGoOfPictures();
}

void ScreenStreamCoordinator::finishVideo() {
    videoPath_.finish();
}

Task<> ScreenStreamCoordinator::waitForAudioEnd() {
    if (audioPath_) {
        co_await audioPath_->waitForEnd();
    }
}

Task<> ScreenStreamCoordinator::flushAudio() {
    if (audioPath_) {
        co_await audioPath_->flush();
    } else {
        logger_.debug("Flushed all samples from buffer.");
    }
}

RecorderStatistics ScreenStreamCoordinator::statistics() const {
    RecorderStatistics statistics;
    videoPath_.addTo(statistics);
    statistics.framesRepeated = framesRepeated_.load(std::memory_order_relaxed);
    if (audioPath_) {
        const SoundMeter::Level level = audioPath_->level();
        statistics.soundLevels.push_back({"System Audio", "", level.peak, level.rms});
    }
    return statistics;
}

}  // namespace zorvane
