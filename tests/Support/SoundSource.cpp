#include "tests/Support/SoundSource.hpp"

#include <cmath>
#include <cstring>

namespace zorvane::testing {
namespace {

template <class Sample>
void put(Sample sample, std::byte* place) {
    std::memcpy(place, &sample, sizeof(sample));
}

void putLevel(double level, AVAudioCommonFormat format, std::byte* place) {
    switch (format) {
        case AVAudioCommonFormat::int16:
            put(static_cast<std::int16_t>(std::lround(level * 0x7fff)), place);
            break;
        case AVAudioCommonFormat::int32:
            put(static_cast<std::int32_t>(std::llround(level * 0x7fffffff)), place);
            break;
        case AVAudioCommonFormat::float32:
            put(static_cast<float>(level), place);
            break;
    }
}

}  // namespace

CMSampleBuffer soundAt(CMTime time, const AVAudioFormat& format, std::uint32_t frames, const SoundLevel& level) {
    const auto block = AVAudioPCMBuffer::make(format, frames);
    block->setFrameLength(frames);
    const std::size_t sampleSize = format.bytesPerFrame() / format.channelCount;
    std::byte* place = block->mutableBytes().data();
    for (std::uint32_t frame = 0; frame < frames; ++frame) {
        for (std::uint32_t channel = 0; channel < format.channelCount; ++channel) {
            putLevel(level(frame, channel), format.commonFormat, place);
            place += sampleSize;
        }
    }
    const auto rate = static_cast<std::int32_t>(format.sampleRate);
    return CMSampleBuffer::audio(block, {CMTime::make(1, rate), time, kCMTimeInvalid}, nullptr);
}

SoundLevel clickAt(std::uint32_t click) {
    return [click](std::uint32_t frame, std::uint32_t) { return frame == click ? 0.9 : 0.0; };
}

SoundLevel steady(double level) {
    return [level](std::uint32_t, std::uint32_t) { return level; };
}

}  // namespace zorvane::testing
