#include "Zorvane/Platform/Virtual/VirtualSound.hpp"

#include <cmath>
#include <cstring>
#include <numbers>

namespace zorvane {

std::vector<double> VirtualSound::tones(const SCAudibleProcesses& audible) const {
    std::vector<double> tones;
    if (frequency > 0 && audible.include({})) {
        tones.push_back(frequency);
    }
    for (const auto& [processID, pitch] : applications) {
        if (pitch > 0 && audible.include({&processID, 1})) {
            tones.push_back(pitch);
        }
    }
    return tones;
}

std::shared_ptr<const AVAudioPCMBuffer> VirtualSound::render(std::int64_t block, const AVAudioFormat& blockFormat,
                                                             const SCAudibleProcesses& audible) const {
    const auto frames = static_cast<std::uint32_t>(
        std::lround(blockFormat.sampleRate * std::chrono::duration<double>(blockDuration).count()));
    auto pcm = AVAudioPCMBuffer::make(blockFormat, frames);
    pcm->setFrameLength(frames);
    const std::vector<double> pitches = tones(audible);
    std::byte* out = pcm->mutableBytes().data();
    for (std::uint32_t frame = 0; frame < frames; ++frame) {
        const double time = static_cast<double>(block * frames + frame) / blockFormat.sampleRate;
        double sum = 0;
        for (const double pitch : pitches) {
            sum += amplitude * std::sin(2 * std::numbers::pi * pitch * time);
        }
        const auto value = static_cast<float>(sum);
        for (std::uint32_t channel = 0; channel < blockFormat.channelCount; ++channel) {
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
