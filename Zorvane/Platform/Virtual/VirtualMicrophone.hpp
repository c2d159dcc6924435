// What a virtual microphone hears, and everything that can be wrong with it.
#pragma once

#include <chrono>
#include <cstdint>
#include <span>

#include "Zorvane/Platform/AVFoundation/AVAudioFormat.hpp"

namespace zorvane {

/// The room in front of a microphone is a pure function of time: a sine on all channels, or silence, on the host clock.
/// So a sound that goes on after a loss goes on in its place, and a recording can be held against the truth. A plain
/// value; a script changes it at a moment, and a running capture follows with its next block.
struct VirtualMicrophone {
    static constexpr double amplitude = 0.25;  ///< of full scale

    double frequency = 0;  ///< Hz, 0 for silence
    AVAudioFormat format{AVAudioCommonFormat::float32, 48000, 1};
    /// By how much the device's own clock runs faster than the host clock, in millionths. Its count of frames and the
    /// pitch of what it hears are off by as much; a recording isn't.
    double driftPPM = 0;
    /// Listed as ever, but no block comes.
    bool isMute = false;
    /// Blocks that begin before this host time get lost.
    std::chrono::nanoseconds lostUntil{0};
    /// Frames by which the device's count has jumped so far: ahead as after a loss that nobody saw, or back, so that it
    /// gives again what it has given.
    std::int64_t jumpedFrames = 0;
    /// How long after its end a block is delivered, and by how much its time and its delivery scatter.
    std::chrono::nanoseconds latency{0};
    std::chrono::nanoseconds jitter{0};

    /// Frames per second on the host clock.
    double trueRate() const { return format.sampleRate * (1 + driftPPM * 1e-6); }
    /// Fills whole frames with what is heard from `time` on, in seconds.
    void render(double time, std::span<std::byte> frames) const;
};

}  // namespace zorvane
