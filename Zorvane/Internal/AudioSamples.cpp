#include "Zorvane/Internal/AudioSamples.hpp"

#include <algorithm>
#include <limits>
#include <utility>

#include "Zorvane/ZVError.hpp"

namespace zorvane::audio_samples {
namespace {

constexpr double maxFrames = std::numeric_limits<std::uint32_t>::max();

/// By how much a product of seconds and a rate may fall short of the frames that it stands for: without it one gap in
/// twelve would lose a frame.
constexpr double roundingOfFrames = 4 * std::numeric_limits<double>::epsilon();

std::shared_ptr<AVAudioPCMBuffer> silentBuffer(const CMFormatDescription& description, double seconds) {
    if (!description.audioFormat) {
        return nullptr;
    }
    const double frames = seconds * description.audioFormat->sampleRate;
    if (!(frames <= maxFrames)) {
        throw ZVError::internalError("Silent audio duration exceeds UInt32 size at format description sample rate.");
    }
    const auto frameCount = static_cast<std::uint32_t>(std::min(frames * (1 + roundingOfFrames), maxFrames));
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
