#include "Zorvane/Internal/Recorders/AudioSamplePath.hpp"

#include <fmt/format.h>

#include <string>
#include <utility>

#include "Zorvane/Internal/Concurrency/Sleep.hpp"

namespace zorvane {
namespace {

// Samples held before the start: enough that the first moment of the recording has sound.
constexpr std::size_t heldSamples = 3;

}  // namespace

AudioSamplePath::AudioSamplePath(const StableRecordingInterval& interval, const Logger& logger,
                                 const AudioSamplePathTraits& traits)
    : logger_(logger),
      traits_(traits),
      interval_(interval),
      gapFiller_(logger),
      prepareAdaptor_(RingBuffer<CMSampleBuffer>(heldSamples)) {}

void AudioSamplePath::process(const CMSampleBuffer& sampleBuffer, const CMClock* clock) {
    meter_.measure(sampleBuffer);
    for (const CMSampleBuffer& filled : fillGap(placement_.place(sampleBuffer, clock))) {
        handle(filled);
    }
}

AudioGapFiller::Samples AudioSamplePath::fillGap(const CMSampleBuffer& sampleBuffer) {
    try {
        return gapFiller_.process(sampleBuffer);
    } catch (...) {
        const std::exception_ptr error = std::current_exception();
        logger_.warning("Audio gap detection/correction failed.", [&] {
            return LogMetadata{{"error", debugDescription(error)},
                               {"samplePTS", sampleBuffer.presentationTimeStamp().logDescription()},
                               {"sampleDuration", sampleBuffer.duration().logDescription()}};
        });
        return AudioGapFiller::Samples(sampleBuffer);
    }
}

void AudioSamplePath::handle(const CMSampleBuffer& sampleBuffer) {
    interval_.refresh();
    if (sink_ && interval_.contains(sampleBuffer.presentationTimeStamp().seconds())) {
        keep(sampleBuffer);
    } else {
        prepareAdaptor_.append(sampleBuffer);
    }
    noteEnd(sampleBuffer);
}

void AudioSamplePath::keep(const CMSampleBuffer& sampleBuffer) {
    if (!std::exchange(didStart_, true)) {
        start(sampleBuffer.presentationTimeStamp());
    }
    sink_->append(sampleBuffer);
}

void AudioSamplePath::start(CMTime firstSampleTime) {
    using StartMessage = AudioSamplePathTraits::StartMessage;
    const auto message = [&](std::string_view what) {
        return fmt::format("Got first sample after recording interval start, {} {}.", what, traits_.activity);
    };
    const auto starting = [&] { return message("starting"); };
    const auto time = [&] { return LogMetadata{{"hostTimeClockPTS", firstSampleTime.logDescription()}}; };
    if (traits_.startMessage == StartMessage::trace) {
        logger_.trace(starting, time);
    } else if (traits_.startMessage == StartMessage::debug) {
        logger_.debug(starting, time);
    }
    sink_->begin(CMTime::fromSeconds(interval_.recordFrom(), firstSampleTime.timescale));
    const RingBuffer<CMSampleBuffer> held = prepareAdaptor_.buffer();
    for (const CMSampleBuffer& heldSample : held) {
        sink_->append(heldSample);
    }
    prepareAdaptor_.clear();
    if (traits_.startMessage != StartMessage::none) {
        logger_.debug([&] { return message("started"); });
    }
}

void AudioSamplePath::noteEnd(const CMSampleBuffer& sampleBuffer) {
    const CMTime begin = sampleBuffer.presentationTimeStamp();
    const CMTime duration = sampleBuffer.duration();
    const CMTime end = duration.isNumeric() ? begin + duration : begin;
    endWatch_.note(end.seconds(), interval_.recordUntil());
}

Task<> AudioSamplePath::waitForSample(double timeout, ZVError error) const {
    co_await prepareAdaptor_.waitForItem(timeout, std::make_exception_ptr(std::move(error)));
}

Task<> AudioSamplePath::waitForEnd() const {
    const bool hasEnded = co_await endWatch_.wait();
    if (!hasEnded) {
        logger_.debug("Source of sound gave nothing up to the end of the recording, the rest is silence.");
    }
}

Task<> AudioSamplePath::flush() const {
    while (const std::size_t remaining = sink_->partialFlush()) {
        logger_.info("Couldn't flush all frames in buffer at once, retrying a bit.", [&] {
            return LogMetadata{{"itemsInBuffer", std::to_string(remaining)}};
        });
        co_await sleepFor(traits_.flushInterval, traits_.flushTolerance);
    }
    logger_.debug("Flushed all samples from buffer.");
}

}  // namespace zorvane
