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
/// rest, jitter of the source's times doesn't show, and no drift adds up.
///
/// The first block is placed by its host time. Should the mean of later ones disagree, the sound moves to its true
/// place by at most 2 ms in a second, which is not heard. From then on:
///
/// | the source's count | its host time | what happens |
/// |---|---|---|
/// | goes on | as expected, within 50 ms | the loop follows |
/// | goes on | is off by more for a fifth of a second, or by half a second | the loop begins anew |
/// | jumps ahead | as expected | frames were lost: a gap of as many whole output frames, in its place |
/// | jumps back | as expected | what lies before the end of the block before is cut off |
/// | jumps | is off by more | the source counts anew: as after `restart` |
///
/// Where the loop begins anew the sound is placed by its host time: a gap if that is later, cut off if it is earlier
/// than what has been handed over. Rates more than 1 % off the nominal one aren't followed: such a source (44.1 kHz
/// sound that is said to be 48 kHz) plays at a wrong pitch, and at its right time within 70 ms, with a cut or a gap
/// each time that the loop begins anew.
///
/// Pure: no thread, no clock. Used by one thread at a time; allocates nothing per block in steady state.
class SoundAligner {
  public:
    /// Takes a sample of sound: 10 ms, or less before a gap. Its time has the output rate as its timescale.
    using Sink = std::function<void(const CMSampleBuffer& sample)>;

    /// Of the same channel count or another; sample rates as in the formats. Throws `NSError` for formats that can't
    /// be converted. `converting` outlives the aligner.
    SoundAligner(const AVAudioFormat& source, const AVAudioFormat& output, AVAudioConverting& converting, Sink sink);
    ~SoundAligner();

    /// Hands over what is complete before it returns. Throws what the converter or the sink throws; after that,
    /// `restart`.
    void process(const SourceSoundBlock& block);

    /// The source begins to count anew, is another one, or has ended. What is still inside is handed over. Time goes
    /// on: what follows is placed by its host time.
    void restart();

    /// The same, and what follows has another format. Throws `NSError` if that can't be converted; then nothing has
    /// changed.
    void restart(const AVAudioFormat& source);

    /// The source's true rate against its nominal one, as a fraction beyond it; 0 until it is known.
    double rateDeviation() const;

  private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace zorvane
