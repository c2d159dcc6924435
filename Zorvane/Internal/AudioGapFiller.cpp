#include "Zorvane/Internal/AudioGapFiller.hpp"

#include <utility>

#include "Zorvane/Internal/AudioSamples.hpp"

namespace zorvane {
namespace {

/// Where the sample ends, if it says how long it is.
std::optional<CMTime> endOf(const CMSampleBuffer& sampleBuffer) {
    const CMTime end = sampleBuffer.presentationTimeStamp() + sampleBuffer.duration();
    return end.isNumeric() ? std::optional(end) : std::nullopt;
}

}  // namespace

AudioGapFiller::AudioGapFiller(Logger logger) : logger_(std::move(logger)) {}

AudioGapFiller::Samples AudioGapFiller::process(const CMSampleBuffer& sampleBuffer) {
    const CMTime time = sampleBuffer.presentationTimeStamp();
    const auto samplePTS = [&] { return LogMetadata{{"samplePTS", time.logDescription()}}; };
    if (!time.isNumeric()) {
        logger_.warning("Invalid presentation time in sample buffer, unable to detect gaps.", samplePTS);
        return Samples(sampleBuffer);
    }
    const std::optional<CMTime> expected = std::exchange(nextTime_, endOf(sampleBuffer));
    if (!expected) {
        logger_.debug("Received first sample buffer, gap detection started.", samplePTS);
        return Samples(sampleBuffer);
    }
    const CMTime delta = time - *expected;
    if (delta > kCMTimeZero) {
        return filled(sampleBuffer, *expected, delta);
    }
    if (delta < kCMTimeZero) {
        logger_.warning("Negative gap detected, got overlapping audio, this should never happen.", [&] {
            return LogMetadata{{"nextTime", expected->logDescription()},
                               {"delta", delta.logDescription()},
                               {"samplePTS", time.logDescription()},
                               {"sampleDuration", sampleBuffer.duration().logDescription()}};
        });
    }
    return Samples(sampleBuffer);
}

AudioGapFiller::Samples AudioGapFiller::filled(const CMSampleBuffer& sampleBuffer, CMTime start,
                                               CMTime duration) const {
    const auto gap = [&] {
        return LogMetadata{{"start", start.logDescription()}, {"duration", duration.logDescription()}};
    };
    logger_.debug("Detected gap in audio.", gap);
    if (!sampleBuffer.formatDescription()) {
        logger_.warning("Sample buffer is missing format description, unable to fill detected audio gap.", gap);
        return Samples(sampleBuffer);
    }
    CMSampleBuffer silence = audio_samples::silentAudio(sampleBuffer.formatDescription(), duration, start);
    logger_.info("Detected gap in audio.", gap);
    return Samples(std::move(silence), sampleBuffer);
}

}  // namespace zorvane
