#include "Zorvane/Internal/AudioSamples.hpp"

#include <limits>
#include <utility>

#include "Zorvane/ZVError.hpp"

namespace zorvane::audio_samples {
namespace {

std::shared_ptr<AVAudioPCMBuffer> silentBuffer(const CMFormatDescription& description, double seconds) {
    if (!description.audioFormat) {
        return nullptr;
    }
    const double frames = seconds * description.audioFormat->sampleRate;
    if (!(frames <= std::numeric_limits<std::uint32_t>::max())) {
        throw ZVError::internalError("Silent audio duration exceeds UInt32 size at format description sample rate.");
    }
    const auto frameCount = static_cast<std::uint32_t>(frames);
    auto buffer = AVAudioPCMBuffer::make(*description.audioFormat, frameCount);
    if (buffer) {
        buffer->setFrameLength(frameCount);
    }
    return buffer;
}

}  // namespace

CMSampleBuffer silentAudio(const std::shared_ptr<const CMFormatDescription>& formatDescription, CMTime duration,
                           CMTime presentationTimeStamp) {
    if (!(duration > kCMTimeZero)) {
        throw ZVError::internalError("Silent audio duration must be greater than zero.");
    }
    auto buffer = silentBuffer(*formatDescription, duration.seconds());
    if (!buffer) {
        throw ZVError::internalError(
            "AVAudioPCMBuffer for silent audio returned nil, check duration and format description.");
    }
    return from(std::move(buffer), presentationTimeStamp);
}

CMSampleBuffer from(std::shared_ptr<const AVAudioPCMBuffer> buffer, CMTime presentationTimeStamp) {
    CMFormatDescription description;
    description.mediaType = CMMediaType::audio;
    description.audioFormat = buffer->format();
    CMSampleTimingInfo timing;
    timing.duration = CMTime::make(1, static_cast<std::int32_t>(buffer->format().sampleRate));
    timing.presentationTimeStamp = presentationTimeStamp;
    return CMSampleBuffer::audio(std::move(buffer), timing,
                                 std::make_shared<const CMFormatDescription>(std::move(description)));
}

}  // namespace zorvane::audio_samples
