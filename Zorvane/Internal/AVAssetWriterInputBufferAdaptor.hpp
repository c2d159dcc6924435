// Appends sound to a writer's input and loses none: what the input can't take yet waits.
#pragma once

#include <memory>

#include "Zorvane/Internal/Logger.hpp"
#include "Zorvane/Internal/UnboundedBackpressureBuffer.hpp"
#include "Zorvane/Platform/AVFoundation/AVAssetWriterInput.hpp"

namespace zorvane {

/// A sample that the input fails to append counts as taken: the failure comes to light through the writer's `status`
/// and `error`. Any thread.
class AVAssetWriterInputBufferAdaptor {
  public:
    AVAssetWriterInputBufferAdaptor(std::shared_ptr<AVAssetWriterInput> assetWriterInput, Logger logger);

    /// Hands the sample and those before it to the input as far as it takes them; logs when some have to wait.
    void append(const CMSampleBuffer& sampleBuffer);

    /// The samples that wait, to be flushed at the end.
    UnboundedBackpressureBuffer<CMSampleBuffer>& unboundedBackpressureBuffer() { return unboundedBackpressureBuffer_; }

    const std::shared_ptr<AVAssetWriterInput>& assetWriterInput() const { return assetWriterInput_; }

  private:
    UnboundedBackpressureBuffer<CMSampleBuffer> unboundedBackpressureBuffer_;
    const Logger logger_;
    const std::shared_ptr<AVAssetWriterInput> assetWriterInput_;
};

}  // namespace zorvane
