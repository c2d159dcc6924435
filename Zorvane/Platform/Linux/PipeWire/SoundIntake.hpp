// Makes timed samples of what the graph brought.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "Zorvane/Platform/CoreAudio/SoundAligner.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireSoundSources.hpp"
#include "Zorvane/Platform/Linux/PipeWire/SoundRing.hpp"

namespace zorvane {

/// When the first frame of a cycle was heard, or will be, by people in the room.
///
/// At the time of a cycle a source hands over what it has recorded last. Its latency says how long ago the first frame
/// of that was in the air: a sound card's is one quantum, in which its buffer fills, and what its converters take. What
/// an application or the monitor of a sink hands over is played later, by the latency of the sink. A sink by whose
/// clock the cycle runs is the last one in it, so its monitor hands over what was played in the cycle before.
std::chrono::nanoseconds heardAt(const SoundCycle& cycle, const PipeWireSoundDistance& distance);

/// Brings cycles onto the host clock by an aligner, which begins anew where another clock of the graph counts, or the
/// distance from the air is another one. Time that runs on without cycles can be given as silence, which then joins the
/// sound on both sides; once that was asked for, so is the time between two clocks. Frames that one clock lost are a
/// gap.
///
/// Pure: no thread, no clock. Used by one thread at a time. What the converter or the sink throws passes through; the
/// next cycle begins anew.
class SoundIntake {
  public:
    /// Takes so many channels and mixes them to the output's. `converting` outlives the intake.
    SoundIntake(std::uint32_t channelCount, const AVAudioFormat& output, AVAudioConverting& converting,
                SoundAligner::Sink sink);

    void take(const SoundCycle& cycle, const SoundRing::Parts& frames, const PipeWireSoundDistance& distance);

    /// Gives silence from where sound ended to `time`, if that is later. The first time it only notes `time`.
    void fillUntil(std::chrono::nanoseconds time);

  private:
    struct Place {
        SoundCycle cycle;
        std::chrono::nanoseconds heardAt;

        /// Depends on the cycle's length too.
        std::chrono::nanoseconds distance() const { return heardAt - cycle.time; }
    };

    void put(const Place& place, const SoundRing::Parts& frames);
    bool isContinued(const Place& place) const;
    bool isSilent() const;
    void endSound();
    void prepareAligner(double rate);
    void process(std::int64_t position, std::chrono::nanoseconds time, std::span<const float> frames);
    void deliver(const CMSampleBuffer& sample);

    const std::uint32_t channelCount_;
    const AVAudioFormat output_;
    AVAudioConverting& converting_;
    const SoundAligner::Sink sink_;
    const std::vector<float> silence_;
    double rate_ = 0;  // what the aligner takes
    std::unique_ptr<SoundAligner> aligner_;
    std::optional<Place> last_;
    std::optional<std::chrono::nanoseconds> end_;  // of what was put
    std::optional<CMTime> deliveredUntil_;
    bool fills_ = false;  // it was asked for silence
};

}  // namespace zorvane
