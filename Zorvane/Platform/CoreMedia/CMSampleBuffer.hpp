// A sample: a picture or a block of sound, with its time.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "Zorvane/Platform/AVFoundation/AVAudioPCMBuffer.hpp"
#include "Zorvane/Platform/CoreMedia/CMFormatDescription.hpp"
#include "Zorvane/Platform/CoreMedia/CMTime.hpp"
#include "Zorvane/Platform/CoreMedia/CVPixelBuffer.hpp"

namespace zorvane {

/// When a sample is to be shown or heard, on the clock of its source.
struct CMSampleTimingInfo {
    CMTime duration = kCMTimeInvalid;  ///< of one sample
    CMTime presentationTimeStamp = kCMTimeInvalid;
    CMTime decodeTimeStamp = kCMTimeInvalid;
};

/// What a source says beside the picture. `frameStatus` holds an `SCFrameStatus` as an integer.
struct CMSampleAttachments {
    std::optional<std::int32_t> frameStatus;
};

/// A cheap handle: a counted, immutable payload plus timing of its own. A retimed copy copies no pixels, and copying a
/// handle allocates nothing. A default-made handle is not valid. Handles may be passed between threads.
class CMSampleBuffer {
  public:
    CMSampleBuffer() = default;

    /// One picture. `format` may be absent for raw pictures: their shape is the picture's.
    static CMSampleBuffer video(CVPixelBufferRef image, const CMSampleTimingInfo& timing,
                                const CMSampleAttachments& attachments,
                                std::shared_ptr<const CMFormatDescription> format = nullptr);

    /// A screen sample without a picture: an `idle`, `blank` or `stopped` notice.
    static CMSampleBuffer notice(const CMSampleTimingInfo& timing, const CMSampleAttachments& attachments);

    /// `pcm->frameLength()` samples of sound; `timing.duration` is that of one frame.
    static CMSampleBuffer audio(std::shared_ptr<const AVAudioPCMBuffer> pcm, const CMSampleTimingInfo& timing,
                                std::shared_ptr<const CMFormatDescription> format);

    bool isValid() const { return valid_; }
    /// 1 for a picture, the number of frames for sound, 0 for a notice.
    std::int64_t numSamples() const { return numSamples_; }
    CMTime presentationTimeStamp() const { return timing_.presentationTimeStamp; }
    /// Of all samples together; invalid when the source gave none.
    CMTime duration() const;
    const CMSampleTimingInfo& timing() const { return timing_; }
    const std::shared_ptr<const CMFormatDescription>& formatDescription() const { return format_; }
    const CMSampleAttachments& attachments() const { return attachments_; }
    /// Empty for sound and notices.
    const CVPixelBufferRef& imageBuffer() const { return image_; }
    /// Null for pictures and notices.
    const std::shared_ptr<const AVAudioPCMBuffer>& audioBuffer() const { return pcm_; }

    /// The same payload with another timing. Throws `NSError` on an invalid buffer.
    CMSampleBuffer copyWithNewTiming(const CMSampleTimingInfo& timing) const;

  private:
    bool valid_ = false;
    std::int64_t numSamples_ = 0;
    CMSampleTimingInfo timing_;
    CMSampleAttachments attachments_;
    CVPixelBufferRef image_;
    std::shared_ptr<const AVAudioPCMBuffer> pcm_;
    std::shared_ptr<const CMFormatDescription> format_;
};

}  // namespace zorvane
