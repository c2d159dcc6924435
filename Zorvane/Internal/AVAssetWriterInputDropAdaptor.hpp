// Appends pictures to a writer's input and drops those that come while it isn't ready: video never waits.
#pragma once

#include <memory>

#include "Zorvane/Internal/Logger.hpp"
#include "Zorvane/Platform/AVFoundation/AVAssetWriterInput.hpp"

namespace zorvane {

/// Used by one thread at a time, as the input itself.
class AVAssetWriterInputDropAdaptor {
  public:
    AVAssetWriterInputDropAdaptor(std::shared_ptr<AVAssetWriterInput> assetWriterInput, Logger logger);

    /// Whether the input took the sample. A refused and a failed one are both lost, each with a message of its own.
    bool append(const CMSampleBuffer& sampleBuffer);

    const std::shared_ptr<AVAssetWriterInput>& assetWriterInput() const { return assetWriterInput_; }

  private:
    const Logger logger_;
    const std::shared_ptr<AVAssetWriterInput> assetWriterInput_;
};

}  // namespace zorvane
