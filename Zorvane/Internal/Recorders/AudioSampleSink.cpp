#include "Zorvane/Internal/Recorders/AudioSampleSink.hpp"

#include <utility>

#include "Zorvane/Internal/LogPieces.hpp"

namespace zorvane {

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
    : backpressureBuffer_([callback = std::move(callback), logger](const CMSampleBuffer& sampleBuffer) {
          using Result = UnboundedBackpressureBuffer<CMSampleBuffer>::HandlerResult;
          try {
              return callback(sampleBuffer) ? Result::handledItem : Result::notReadyForItem;
          } catch (...) {
              logger.error("The sample callback threw.", errorMetadata(std::current_exception()));
              return Result::handledItem;
          }
      }) {}

}  // namespace zorvane
