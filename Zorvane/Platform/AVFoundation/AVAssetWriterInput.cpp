#include "Zorvane/Platform/AVFoundation/AVAssetWriterInput.hpp"

#include <utility>

#include "Zorvane/Platform/Foundation/NSException.hpp"

namespace zorvane {

AVAssetWriterInput::AVAssetWriterInput(AVVideoSettings settings) : settings_(std::move(settings)) {}

AVAssetWriterInput::AVAssetWriterInput(AVAudioSettings settings) : settings_(std::move(settings)) {}

AVMediaType AVAssetWriterInput::mediaType() const {
    return std::holds_alternative<AVVideoSettings>(settings_) ? AVMediaType::video : AVMediaType::audio;
}

bool AVAssetWriterInput::isReadyForMoreMediaData() const {
    return sink_ && !finished_ && sink_->isReadyForMoreMediaData();
}

bool AVAssetWriterInput::append(const CMSampleBuffer& sampleBuffer) {
    if (!sink_) {
        throw NSException("NSInternalInconsistencyException", "Can't append to an input that no writer has.");
    }
    if (finished_) {
        throw NSException("NSInternalInconsistencyException", "Can't append to an input that is marked as finished.");
    }
    return sink_->append(sampleBuffer);
}

void AVAssetWriterInput::markAsFinished() {
    if (sink_ && !finished_.exchange(true)) {
        sink_->markAsFinished();
    }
}

void AVAssetWriterInput::attach(std::shared_ptr<AVAssetWriterInputSink> sink) {
    sink_ = std::move(sink);
}

}  // namespace zorvane
