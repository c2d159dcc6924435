#include "Zorvane/Platform/Virtual/VirtualSound.hpp"

#include <cmath>
#include <cstring>
#include <numbers>

namespace zorvane {

std::shared_ptr<const AVAudioPCMBuffer> VirtualSound::render(std::int64_t block) const {
    auto pcm = AVAudioPCMBuffer::make(format, framesPerBlock);
    pcm->setFrameLength(framesPerBlock);
    if (frequency <= 0) {
        return pcm;
    }
    std::byte* out = pcm->mutableBytes().data();
    for (std::uint32_t frame = 0; frame < framesPerBlock; ++frame) {
        const double time = static_cast<double>(block * framesPerBlock + frame) / format.sampleRate;
        const auto value = static_cast<float>(amplitude * std::sin(2 * std::numbers::pi * frequency * time));
        for (std::uint32_t channel = 0; channel < format.channelCount; ++channel) {
            std::memcpy(out, &value, sizeof(value));
            out += sizeof(value);
        }
    }
    return pcm;
}

std::chrono::nanoseconds VirtualSound::stamp(std::chrono::nanoseconds begin) const {
    std::chrono::nanoseconds time = begin;
    for (const Shift& shift : shifts) {
        if (shift.from <= begin) {
            time += shift.by;
        }
    }
    return time;
}

}  // namespace zorvane
