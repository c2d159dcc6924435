// The layout of uncompressed sound.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zorvane {

enum class AVAudioCommonFormat : std::uint8_t { int16, int32, float32 };

/// Interleaved samples: one frame holds one sample of each channel.
struct AVAudioFormat {
    AVAudioCommonFormat commonFormat = AVAudioCommonFormat::float32;
    double sampleRate = 48000;       ///< frames per second
    std::uint32_t channelCount = 2;  ///< 1 to 8

    constexpr std::size_t bytesPerFrame() const {
        return channelCount * (commonFormat == AVAudioCommonFormat::int16 ? 2u : 4u);
    }
    bool operator==(const AVAudioFormat&) const = default;
};

}  // namespace zorvane
