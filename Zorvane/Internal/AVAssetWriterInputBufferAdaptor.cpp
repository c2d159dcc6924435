#include "Zorvane/Internal/AVAssetWriterInputBufferAdaptor.hpp"

#include <string>
#include <utility>

namespace zorvane {
namespace {

using Buffer = UnboundedBackpressureBuffer<CMSampleBuffer>;

Buffer::Handler appendingTo(std::shared_ptr<AVAssetWriterInput> input) {
    return [input = std::move(input)](const CMSampleBuffer& sampleBuffer) {
        if (!input->isReadyForMoreMediaData()) {
            return Buffer::HandlerResult::notReadyForItem;
        }
        input->append(sampleBuffer);
        return Buffer::HandlerResult::handledItem;
    };
}

}  // namespace

AVAssetWriterInputBufferAdaptor::AVAssetWriterInputBufferAdaptor(std::shared_ptr<AVAssetWriterInput> assetWriterInput,
                                                                 Logger logger)
    : unboundedBackpressureBuffer_(appendingTo(assetWriterInput)),
      logger_(std::move(logger)),
      assetWriterInput_(std::move(assetWriterInput)) {}

void AVAssetWriterInputBufferAdaptor::append(const CMSampleBuffer& sampleBuffer) {
    const std::size_t itemsBuffered = unboundedBackpressureBuffer_.append(sampleBuffer);
    if (itemsBuffered > 0) {
        logger_.debug("Experiencing backpressure, buffering.", [&] {
            return LogMetadata{{"itemsBuffered", std::to_string(itemsBuffered)}};
        });
    }
}

}  // namespace zorvane
