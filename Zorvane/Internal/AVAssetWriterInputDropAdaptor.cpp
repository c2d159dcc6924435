#include "Zorvane/Internal/AVAssetWriterInputDropAdaptor.hpp"

#include <utility>

namespace zorvane {

AVAssetWriterInputDropAdaptor::AVAssetWriterInputDropAdaptor(std::shared_ptr<AVAssetWriterInput> assetWriterInput,
                                                             Logger logger)
    : logger_(std::move(logger)), assetWriterInput_(std::move(assetWriterInput)) {}

bool AVAssetWriterInputDropAdaptor::append(const CMSampleBuffer& sampleBuffer) {
    const auto samplePTS = [&] {
        return LogMetadata{{"samplePTS", sampleBuffer.presentationTimeStamp().logDescription()}};
    };
    if (!assetWriterInput_->isReadyForMoreMediaData()) {
        logger_.info("AVAssetWriterInput isn't ready, dropping frame.", samplePTS);
        return false;
    }
    if (!assetWriterInput_->append(sampleBuffer)) {
        logger_.warning("Failed to append to AVAssetWriterInput.", samplePTS);
        return false;
    }
    return true;
}

}  // namespace zorvane
