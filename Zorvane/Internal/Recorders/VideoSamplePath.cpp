#include "Zorvane/Internal/Recorders/VideoSamplePath.hpp"

#include <fmt/format.h>

#include <utility>

namespace zorvane {
namespace {

constexpr std::size_t heldFrames = 1;  // enough to know that pictures come
constexpr std::size_t retimerCapacity = 3;

}  // namespace

VideoSamplePath::VideoSamplePath(const StableRecordingInterval& interval, const Logger& logger)
    : logger_(logger), interval_(interval), held_(RingBuffer<Picture>(heldFrames)) {}

void VideoSamplePath::connect(const MediaOutput& output, std::shared_ptr<AVAssetWriterInput> input) {
    const bool zeroBasedOutputTimes = output.writers()->expectsZeroBasedVideoPTS();
    output_.reset(new Output{.writers = output.writers(),
                             .session = output.session(),
                             .inputAdaptor = AVAssetWriterInputDropAdaptor(std::move(input), logger_),
                             .retimer = Retimer(interval_, retimerCapacity, zeroBasedOutputTimes)});
    // The handler runs inside the calls to the retimer only, which this path makes.
    output_->retimer.setHandler([this](Retimer::Position position, const CMSampleBuffer& original, CMTime newTime) {
        write(position, original, newTime);
    });
    for (const Picture& held : held_.buffer()) {
        append(held.sampleBuffer, held.hostTime);
    }
}

void VideoSamplePath::process(const CMSampleBuffer& sampleBuffer, CMTime hostTime) {
    hold(sampleBuffer, hostTime);
    append(sampleBuffer, hostTime);
    endWatch_.note(hostTime.seconds(), currentInterval().recordUntil());
}

void VideoSamplePath::hold(const CMSampleBuffer& sampleBuffer, CMTime hostTime) {
    held_.append({sampleBuffer, hostTime});
}

void VideoSamplePath::append(const CMSampleBuffer& sampleBuffer, CMTime time) {
    if (output_) {
        output_->retimer.append(sampleBuffer, time);
    }
}

void VideoSamplePath::write(Retimer::Position position, const CMSampleBuffer& original, CMTime newTime) {
    if (original.numSamples() >= 2) {
        logger_.warning("Multiple samples in CMSampleBuffer, but retiming assumes one sample.", [&] {
            return LogMetadata{{"numSamples", fmt::format("{}", original.numSamples())}};
        });
    }
    const CMSampleBuffer retimed = original.copyWithNewTiming(
        {.duration = original.timing().duration, .presentationTimeStamp = newTime, .decodeTimeStamp = kCMTimeInvalid});
    if (position == Retimer::Position::first) {
        openSession(newTime);
    } else {
        logger_.trace("Appending video sample buffer.", [&] { return LogMetadata{{"pts", newTime.logDescription()}}; });
    }
    const bool appended = output_->inputAdaptor.append(retimed);
    if (!closesOutput(newTime)) {
        (appended ? framesWritten_ : framesDropped_).fetch_add(1, std::memory_order_relaxed);
    }
}

void VideoSamplePath::openSession(CMTime sessionStart) {
    const auto metadata = [&] { return LogMetadata{{"sessionStart", sessionStart.logDescription()}}; };
    logger_.trace("Got first sample after recording interval start, starting recording", metadata);
    output_->session->startIfNeeded(CMTime::fromSeconds(currentInterval().recordFrom(), sessionStart.timescale));
    held_.clear();
    logger_.debug("Got first sample after recording interval start, started recording.", metadata);
}

// The frame at the recording's end only tells the writer how long the one before it lasts: it is not shown itself.
bool VideoSamplePath::closesOutput(CMTime outputTime) const {
    const StableRecordingInterval interval = currentInterval();
    const auto rounded = [&](double seconds) { return CMTime::fromSeconds(seconds, outputTime.timescale); };
    const CMTime base = output_->writers->expectsZeroBasedVideoPTS() ? rounded(interval.recordFrom()) : kCMTimeZero;
    return outputTime >= rounded(interval.recordUntil()) - base;
}

StableRecordingInterval VideoSamplePath::currentInterval() const {
    StableRecordingInterval interval = interval_;
    interval.refresh();
    return interval;
}

Task<CMSampleBuffer> VideoSamplePath::waitForSample(double timeout, ZVError error) const {
    const Picture first = co_await held_.waitForItem(timeout, std::make_exception_ptr(std::move(error)));
    co_return first.sampleBuffer;
}

Task<> VideoSamplePath::waitForEnd() const {
    const bool hasEnded = co_await endWatch_.wait();
    if (!hasEnded) {
        logger_.debug("Source of pictures gave nothing up to the end of the recording, its last picture lasts.");
    }
}

void VideoSamplePath::finish() {
    output_->retimer.finish();
}

void VideoSamplePath::addTo(RecorderStatistics& statistics) const {
    statistics.framesWritten += framesWritten_.load(std::memory_order_relaxed);
    statistics.framesDropped += framesDropped_.load(std::memory_order_relaxed);
}

}  // namespace zorvane
