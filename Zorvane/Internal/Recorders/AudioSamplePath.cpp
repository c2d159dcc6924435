#include "Zorvane/Internal/Recorders/AudioSamplePath.hpp"

#include <string>
#include <utility>

#include "Zorvane/Internal/Concurrency/Sleep.hpp"

namespace zorvane {
namespace {

// Samples held before the start: enough that the first moment of the recording has sound.
constexpr std::size_t heldSamples = 3;

}  // namespace

AudioSamplePath::AudioSamplePath(std::shared_ptr<AVAssetWriterInput> input, std::shared_ptr<WriterSession> session,
                                 const StableRecordingInterval& interval, const Logger& logger)
    : logger_(logger),
      session_(std::move(session)),
      interval_(interval),
      gapFiller_(logger),
      prepareAdaptor_(RingBuffer<CMSampleBuffer>(heldSamples)),
      inputAdaptor_(std::move(input), logger) {}

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

void AudioSamplePath::handle(const CMSampleBuffer& sampleBuffer, CMTime hostTime) {
    interval_.refresh();
    if (!interval_.contains(hostTime.seconds())) {
        prepareAdaptor_.append(sampleBuffer);
        return;
    }
    const std::int32_t timescale = sampleBuffer.presentationTimeStamp().timescale;
    session_->startIfNeeded(CMTime::fromSeconds(interval_.recordFrom(), timescale));
    replayHeldSamples();
    inputAdaptor_.append(sampleBuffer);
}

// Once: what is held later came after the stop.
void AudioSamplePath::replayHeldSamples() {
    if (std::exchange(didReplay_, true)) {
        return;
    }
    const RingBuffer<CMSampleBuffer> held = prepareAdaptor_.buffer();
    for (const CMSampleBuffer& sampleBuffer : held) {
        inputAdaptor_.append(sampleBuffer);
    }
    prepareAdaptor_.clear();
}

Task<> AudioSamplePath::waitForSample(double timeout, ZVError error) {
    co_await prepareAdaptor_.waitForItem(timeout, std::make_exception_ptr(std::move(error)));
}

Task<> AudioSamplePath::flush(const AVAssetWriter& writer, std::chrono::nanoseconds retryInterval,
                              std::chrono::nanoseconds retryTolerance) {
    while (const std::size_t remaining = inputAdaptor_.unboundedBackpressureBuffer().partialFlush()) {
        if (const std::exception_ptr error = writer.error()) {
            std::rethrow_exception(error);
        }
        logger_.info("Couldn't flush all frames in buffer at once, retrying a bit.", [&] {
            return LogMetadata{{"itemsInBuffer", std::to_string(remaining)}};
        });
        co_await sleepFor(retryInterval, retryTolerance);
    }
    logger_.debug("Flushed all samples from buffer.");
}

}  // namespace zorvane
