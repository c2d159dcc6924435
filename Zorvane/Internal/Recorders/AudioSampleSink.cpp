#include "Zorvane/Internal/Recorders/AudioSampleSink.hpp"

#include <bit>
#include <string>
#include <utility>

#include "Zorvane/Internal/LogPieces.hpp"

namespace zorvane {
namespace {

constexpr std::size_t manySamples = 128;  // a second or two

}  // namespace

WriterAudioSampleSink::WriterAudioSampleSink(std::shared_ptr<AVAssetWriterInput> input,
                                             std::shared_ptr<WriterSession> session,
                                             std::shared_ptr<OutputAssetWriters> writers, const Logger& logger)
    : session_(std::move(session)), writers_(std::move(writers)), inputAdaptor_(std::move(input), logger) {}

std::size_t WriterAudioSampleSink::partialFlush() {
    const std::size_t remaining = inputAdaptor_.unboundedBackpressureBuffer().partialFlush();
    if (remaining > 0) {
        if (const std::exception_ptr error = writers_->audioAssetWriter().error()) {
            std::rethrow_exception(error);
        }
    }
    return remaining;
}

HostAudioSampleSink::HostAudioSampleSink(ZVSchemaItem::SampleCallback callback, const Logger& logger)
    : callback_(std::move(callback)),
      logger_(logger),
      backpressureBuffer_([this](const CMSampleBuffer& sampleBuffer) { return offer(sampleBuffer); }) {}

void HostAudioSampleSink::append(const CMSampleBuffer& sampleBuffer) {
    const std::size_t itemsBuffered = backpressureBuffer_.append(sampleBuffer);
    if (itemsBuffered >= manySamples && std::has_single_bit(itemsBuffered)) {
        logger_.warning("The sample callback takes no samples, they pile up in memory.", [&] {
            return LogMetadata{{"itemsBuffered", std::to_string(itemsBuffered)}};
        });
    }
}

HostAudioSampleSink::Buffer::HandlerResult HostAudioSampleSink::offer(const CMSampleBuffer& sampleBuffer) {
    try {
        return callback_(sampleBuffer) ? Buffer::HandlerResult::handledItem : Buffer::HandlerResult::notReadyForItem;
    } catch (...) {
        if (!std::exchange(didLogThrow_, true)) {
            logger_.error("The sample callback threw.", errorMetadata(std::current_exception()));
        }
        return Buffer::HandlerResult::handledItem;
    }
}

}  // namespace zorvane
