// What a virtual desktop sounds like. A pure function of time.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>

#include "Zorvane/Platform/AVFoundation/AVAudioFormat.hpp"
#include "Zorvane/Platform/AVFoundation/AVAudioPCMBuffer.hpp"

namespace zorvane {

/// A sine on all channels, or silence. Two streams that listen at the same time hear the same, and a sound that goes on
/// after a loss goes on in its place.
struct VirtualSound {
    /// How a stream delivers it: blocks of 20 ms that follow each other from the desktop's origin on.
    static constexpr AVAudioFormat format{AVAudioCommonFormat::float32, 48000, 2};
    static constexpr std::uint32_t framesPerBlock = 960;
    static constexpr std::chrono::nanoseconds blockDuration = std::chrono::milliseconds(20);
    static constexpr double amplitude = 0.25;

    double frequency = 0;                                ///< Hz, 0 for silence
    std::chrono::nanoseconds shift{0};                   ///< by which blocks are stamped later than they are heard
    std::chrono::nanoseconds lostFrom{0}, lostUntil{0};  ///< host times; blocks that begin in between get lost

    /// Block number `block` since the origin.
    std::shared_ptr<const AVAudioPCMBuffer> render(std::int64_t block) const;
    bool isLost(std::chrono::nanoseconds hostTime) const { return hostTime >= lostFrom && hostTime < lostUntil; }
};

}  // namespace zorvane
