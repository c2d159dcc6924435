// Brings a source's sound onto the host clock.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>

#include "Zorvane/Platform/AVFoundation/AVAudioConverter.hpp"
#include "Zorvane/Platform/CoreMedia/CMSampleBuffer.hpp"

namespace zorvane {

/// A block of sound as a source gave it.
struct SourceSoundBlock {
    std::int64_t position = 0;          ///< of its first frame, in the source's own count of frames since any moment
    std::chrono::nanoseconds hostTime;  ///< when its first frame was to be heard, give or take the source's jitter
    std::span<const std::byte> frames;  ///< whole frames
};

/// A delay-locked loop estimates the source's true rate from its count and the host times, and steers a resampler by
/// it. So what leaves the aligner has exactly the nominal rate of the output on the host clock: blocks join without a
/// rest, jitter of the source's times doesn't show, and no drift adds up. Frames that the source's count shows as lost
/// are a gap between two blocks, in their place and of whole output frames; what lies before the end of the block
/// before is cut off.
///
/// Pure: no thread, no clock. Used by one thread at a time; allocates nothing per block in steady state.
class SoundAligner {
  public:
    /// Takes a sample of sound whose time has the output rate as its timescale.
    using Sink = std::function<void(const CMSampleBuffer& sample)>;

    /// Of the same channel count or another; sample rates as in the formats.
    SoundAligner(const AVAudioFormat& source, const AVAudioFormat& output, AVAudioConverting& converting, Sink sink);
    ~SoundAligner();

    void process(const SourceSoundBlock& block);

    /// The source begins to count anew, or is another one. Time goes on: what follows is placed by its host time.
    void restart();

    /// The source's true rate against its nominal one, as a fraction beyond it; 0 until it is known.
    double rateDeviation() const;

  private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace zorvane
