#include "Zorvane/Platform/CoreMedia/CMSampleBuffer.hpp"

#include <utility>

#include "Zorvane/Platform/Foundation/NSError.hpp"

namespace zorvane {
namespace {

/// The error domain of sample buffers, and the code for a buffer that holds nothing.
constexpr const char* sampleBufferErrorDomain = "CMSampleBufferErrorDomain";
constexpr int invalidSampleBuffer = -12731;

}  // namespace

CMSampleBuffer CMSampleBuffer::video(CVPixelBufferRef image, const CMSampleTimingInfo& timing,
                                     const CMSampleAttachments& attachments,
                                     std::shared_ptr<const CMFormatDescription> format) {
    CMSampleBuffer sample;
    sample.valid_ = static_cast<bool>(image);
    sample.numSamples_ = 1;
    sample.timing_ = timing;
    sample.attachments_ = attachments;
    sample.image_ = std::move(image);
    sample.format_ = std::move(format);
    return sample;
}

CMSampleBuffer CMSampleBuffer::notice(const CMSampleTimingInfo& timing, const CMSampleAttachments& attachments) {
    CMSampleBuffer sample;
    sample.valid_ = true;
    sample.timing_ = timing;
    sample.attachments_ = attachments;
    return sample;
}

CMSampleBuffer CMSampleBuffer::audio(std::shared_ptr<const AVAudioPCMBuffer> pcm, const CMSampleTimingInfo& timing,
                                     std::shared_ptr<const CMFormatDescription> format) {
    CMSampleBuffer sample;
    sample.valid_ = pcm != nullptr;
    sample.numSamples_ = pcm ? pcm->frameLength() : 0;
    sample.timing_ = timing;
    sample.pcm_ = std::move(pcm);
    sample.format_ = std::move(format);
    return sample;
}

CMTime CMSampleBuffer::duration() const {
    if (!timing_.duration.isValid() || numSamples_ == 1) {
        return timing_.duration;
    }
    return CMTime::make(timing_.duration.value * numSamples_, timing_.duration.timescale);
}

CMSampleBuffer CMSampleBuffer::copyWithNewTiming(const CMSampleTimingInfo& timing) const {
    if (!valid_) {
        throw NSError(sampleBufferErrorDomain, invalidSampleBuffer,
                      {.localizedDescription = "Can't retime a sample buffer that holds nothing."});
    }
    CMSampleBuffer copy = *this;
    copy.timing_ = timing;
    return copy;
}

}  // namespace zorvane
