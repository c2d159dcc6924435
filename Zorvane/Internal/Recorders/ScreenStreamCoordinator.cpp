#include "Zorvane/Internal/Recorders/ScreenStreamCoordinator.hpp"

#include <fmt/format.h>

#include <chrono>
#include <utility>

#include "Zorvane/Platform/CoreMedia/CMClock.hpp"

namespace zorvane {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr double firstSampleTimeout = 3.0;  // seconds
constexpr double repeatInterval = 1.0;      // seconds without a picture before the last one is repeated
constexpr std::size_t heldFrames = 1;       // enough to know that pictures come
constexpr std::size_t retimerCapacity = 3;

ZVError noVideoError() {
    return ZVError::internalError("No video samples received from screen recording.",
                                  "No video from screen recording. If this problem persists, try rebooting your "
                                  "computer.");
}

/// The sample's time on the host clock: that of its arrival when the stream has no clock to convert from.
CMTime hostTimeOf(const CMSampleBuffer& sampleBuffer, const SCStream& stream) {
    const CMClock* clock = stream.synchronizationClock();
    return clock ? clock->convertToHostTime(sampleBuffer.presentationTimeStamp()) : hostTimeClockTime();
}

}  // namespace

std::shared_ptr<ScreenStreamCoordinator> ScreenStreamCoordinator::make(
    const Logger& logger, const StableRecordingInterval& interval, const MediaOutput& output,
    std::shared_ptr<AVAssetWriterInput> videoInput, std::shared_ptr<AVAssetWriterInput> audioInput,
    SourceNotices audioNotices, StopErrorHandler stopErrorHandler) {
    std::shared_ptr<ScreenStreamCoordinator> coordinator(
        new ScreenStreamCoordinator(logger, interval, output, std::move(videoInput), std::move(audioInput),
                                    std::move(audioNotices), std::move(stopErrorHandler)));
    coordinator->connectHandlers();
    return coordinator;
}

ScreenStreamCoordinator::ScreenStreamCoordinator(const Logger& logger, const StableRecordingInterval& interval,
                                                 const MediaOutput& output,
                                                 std::shared_ptr<AVAssetWriterInput> videoInput,
                                                 std::shared_ptr<AVAssetWriterInput> audioInput,
                                                 SourceNotices audioNotices, StopErrorHandler stopErrorHandler)
    : logger_(logger),
      interval_(interval),
      outputAssetWriters_(output.writers()),
      session_(output.session()),
      audioNotices_(std::move(audioNotices)),
      stopErrorHandler_(std::move(stopErrorHandler)),
      videoInputAdaptor_(std::move(videoInput), logger),
      videoRetimer_(interval, retimerCapacity, outputAssetWriters_->expectsZeroBasedVideoPTS()),
      frameRepeater_(repeatInterval),
      videoPrepareAdaptor_(RingBuffer<CMSampleBuffer>(heldFrames)) {
    if (audioInput) {
        const AudioSamplePathTraits traits{.flushInterval = seconds(1), .flushTolerance = milliseconds(100)};
        audioPath_ =
            std::make_unique<AudioSamplePath>(output.makeSink(std::move(audioInput)), interval, logger, traits);
    }
}

void ScreenStreamCoordinator::connectHandlers() {
    const std::weak_ptr<ScreenStreamCoordinator> weakSelf = weak_from_this();
    frameRepeater_.setHandler(
        [weakSelf](const CMSampleBuffer& sampleBuffer, CMTime time, std::optional<CMTime> repeatAddedTime) {
            if (const auto self = weakSelf.lock()) {
                self->frameRepeaterHandler(sampleBuffer, time, repeatAddedTime);
            }
        });
    videoRetimer_.setHandler([weakSelf](RecordingIntervalBoundedRetimerItemPosition position,
                                        const CMSampleBuffer& originalBuffer, CMTime newTime) {
        if (const auto self = weakSelf.lock()) {
            self->retimedVideoFrameHandler(position, originalBuffer, newTime);
        }
    });
}

Task<> ScreenStreamCoordinator::waitForSampleBuffers() {
    co_await videoPrepareAdaptor_.waitForItem(firstSampleTimeout, std::make_exception_ptr(noVideoError()));
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
            handleVideo(sampleBuffer, hostTimeOf(sampleBuffer, stream));
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
    videoPrepareAdaptor_.append(sampleBuffer);
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
        videoRetimer_.append(sampleBuffer, time);
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

void ScreenStreamCoordinator::retimedVideoFrameHandler(RecordingIntervalBoundedRetimerItemPosition position,
                                                       const CMSampleBuffer& originalBuffer, CMTime newTime) {
    if (originalBuffer.numSamples() >= 2) {
        logger_.warning("Multiple samples in CMSampleBuffer, but retiming assumes one sample.", [&] {
            return LogMetadata{{"numSamples", fmt::format("{}", originalBuffer.numSamples())}};
        });
    }
    const CMSampleBuffer retimed = originalBuffer.copyWithNewTiming({.duration = originalBuffer.timing().duration,
                                                                     .presentationTimeStamp = newTime,
                                                                     .decodeTimeStamp = kCMTimeInvalid});
    if (position == RecordingIntervalBoundedRetimerItemPosition::first) {
        openSession(newTime);
    } else {
        logger_.trace("Appending video sample buffer.", [&] { return LogMetadata{{"pts", newTime.logDescription()}}; });
    }
    const bool appended = videoInputAdaptor_.append(retimed);
    if (!closesOutput(newTime)) {
        (appended ? framesWritten_ : framesDropped_).fetch_add(1, std::memory_order_relaxed);
    }
}

// The frame at the recording's end only tells the writer how long the one before it lasts: it is not shown itself.
bool ScreenStreamCoordinator::closesOutput(CMTime outputTime) const {
    StableRecordingInterval interval = interval_;
    interval.refresh();
    const auto rounded = [&](double seconds) { return CMTime::fromSeconds(seconds, outputTime.timescale); };
    const CMTime base = outputAssetWriters_->expectsZeroBasedVideoPTS() ? rounded(interval.recordFrom()) : kCMTimeZero;
    return outputTime >= rounded(interval.recordUntil()) - base;
}

void ScreenStreamCoordinator::openSession(CMTime sessionStart) {
    const auto metadata = [&] { return LogMetadata{{"sessionStart", sessionStart.logDescription()}}; };
    logger_.trace("Got first sample after recording interval start, starting recording", metadata);
    StableRecordingInterval interval = interval_;
    interval.refresh();
    session_->startIfNeeded(CMTime::fromSeconds(interval.recordFrom(), sessionStart.timescale));
    videoPrepareAdaptor_.clear();
    logger_.debug("Got first sample after recording interval start, started recording.", metadata);
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
    videoPrepareAdaptor_.clear();
}

void ScreenStreamCoordinator::finishVideo() {
    videoRetimer_.finish();
}

Task<> ScreenStreamCoordinator::waitForAudioEnd() {
    if (audioPath_) {
        co_await audioPath_->waitForEnd();
    }
}

Task<> ScreenStreamCoordinator::flushAudio() {
    if (audioPath_) {
        co_await audioPath_->flush();
    }
}

RecorderStatistics ScreenStreamCoordinator::statistics() const {
    RecorderStatistics statistics;
    statistics.framesWritten = framesWritten_.load(std::memory_order_relaxed);
    statistics.framesDropped = framesDropped_.load(std::memory_order_relaxed);
    statistics.framesRepeated = framesRepeated_.load(std::memory_order_relaxed);
    if (audioPath_) {
        const SoundMeter::Level level = audioPath_->level();
        statistics.soundLevels.push_back({"System Audio", "", level.peak, level.rms});
    }
    return statistics;
}

}  // namespace zorvane
