// What a virtual desktop sounds like. A pure function of time.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <vector>

#include "Zorvane/Platform/AVFoundation/AVAudioFormat.hpp"
#include "Zorvane/Platform/AVFoundation/AVAudioPCMBuffer.hpp"
#include "Zorvane/Platform/ScreenCaptureKit/SCAudibleProcesses.hpp"

namespace zorvane {

/// A sine of the desktop's own, and one of each application that plays, on all channels. Two streams that listen at the
/// same time to the same hear the same, and a sound that goes on after a loss goes on in its place. Streams deliver
/// blocks of 20 ms that follow each other from the desktop's origin on.
struct VirtualSound {
    /// How a stream delivers it that isn't told otherwise.
    static constexpr AVAudioFormat format{AVAudioCommonFormat::float32, 48000, 2};
    static constexpr std::chrono::nanoseconds blockDuration = std::chrono::milliseconds(20);
    static constexpr double amplitude = 0.25;

    /// Blocks that begin at `from` or later are stamped by so much later than they are heard, on top of other shifts.
    struct Shift {
        std::chrono::nanoseconds from;
        std::chrono::nanoseconds by;
    };

    double frequency = 0;                                ///< Hz, 0 for silence; of no application
    std::map<std::int32_t, double> applications;         ///< Hz by process id
    bool isInterrupted = false;                          ///< streams give nothing
    std::vector<Shift> shifts;                           ///< host times
    std::chrono::nanoseconds lostFrom{0}, lostUntil{0};  ///< host times; blocks that begin in between get lost

    /// Block number `block` since the origin, with what is heard of `audible`.
    std::shared_ptr<const AVAudioPCMBuffer> render(std::int64_t block, const AVAudioFormat& format,
                                                   const SCAudibleProcesses& audible) const;
    bool isLost(std::chrono::nanoseconds begin) const { return begin >= lostFrom && begin < lostUntil; }
    /// The pitches that are heard.
    std::vector<double> tones(const SCAudibleProcesses& audible) const;
    /// The stamp, as a host time, of a block that is heard from `begin` on.
    std::chrono::nanoseconds stamp(std::chrono::nanoseconds begin) const;
};

}  // namespace zorvane
