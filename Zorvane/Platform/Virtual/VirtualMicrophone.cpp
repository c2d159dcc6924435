#include "Zorvane/Platform/Virtual/VirtualMicrophone.hpp"

#include <cmath>
#include <cstring>
#include <limits>
#include <numbers>

namespace zorvane {
namespace {

template <class Sample>
void store(double value, std::byte* at) {
    const auto sample = static_cast<Sample>(value);
    std::memcpy(at, &sample, sizeof(sample));
}

void storeSample(AVAudioCommonFormat format, double value, std::byte* at) {
    switch (format) {
        case AVAudioCommonFormat::int16:
            return store<std::int16_t>(std::round(value * std::numeric_limits<std::int16_t>::max()), at);
        case AVAudioCommonFormat::int32:
            return store<std::int32_t>(std::round(value * std::numeric_limits<std::int32_t>::max()), at);
        case AVAudioCommonFormat::float32:
            return store<float>(value, at);
    }
}

}  // namespace

void VirtualMicrophone::render(double time, std::span<std::byte> frames) const {
    const std::size_t bytesPerSample = format.bytesPerFrame() / format.channelCount;
    std::byte* at = frames.data();
    for (std::size_t frame = 0; frame < frames.size() / format.bytesPerFrame(); ++frame) {
        const double moment = time + static_cast<double>(frame) / trueRate();
        const double value = amplitude * std::sin(2 * std::numbers::pi * frequency * moment);
        for (std::uint32_t channel = 0; channel < format.channelCount; ++channel) {
            storeSample(format.commonFormat, value, at);
            at += bytesPerSample;
        }
    }
}

}  // namespace zorvane
