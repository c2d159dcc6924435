// Carries sound from a real-time thread to an ordinary one.
#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace zorvane {

/// One run of the graph: how much sound it brought, and when.
struct SoundCycle {
    std::uint32_t clock = 0;           ///< which of the graph's clocks counts
    std::int64_t position = 0;         ///< of the first frame, in that clock's count
    std::chrono::nanoseconds time{0};  ///< when the cycle began, on the host clock
    double rate = 0;                   ///< frames per second
    std::uint32_t frames = 0;
};

/// A queue of cycles between one thread that puts them in and another one that takes them out. All memory is there
/// before the first one, and nobody ever waits. What doesn't fit is lost, which shows in the next cycle's position.
class SoundRing {
  public:
    /// Room for at least `frames` frames of float samples, in at most `cycles` cycles.
    SoundRing(std::uint32_t channelCount, std::size_t frames, std::size_t cycles);

    /// Interleaves the channels; null stands for silence. False if there is no room. For the one who puts in.
    bool push(const SoundCycle& cycle, std::span<const float* const> channels);

    /// The oldest cycle; null if there is none. For the one who takes out, as all below.
    const SoundCycle* front() const;
    /// Its frames, interleaved: the second part is empty unless they go over the ring's end.
    struct Parts {
        std::span<const float> first;
        std::span<const float> second;
    };
    Parts frontFrames() const;
    void pop();

  private:
    void interleave(std::span<const float* const> channels, std::size_t from, std::size_t count, std::uint64_t to);

    const std::uint32_t channelCount_;
    const std::size_t frameCapacity_;
    std::vector<float> samples_;
    std::vector<SoundCycle> cycles_;
    // Counts since the beginning; places are their remainders. Each is written by one side only.
    std::uint64_t framesIn_ = 0;
    std::uint64_t framesOut_ = 0;
    std::atomic<std::uint64_t> cyclesIn_{0};
    std::atomic<std::uint64_t> cyclesOut_{0};
    std::atomic<std::uint64_t> framesFreed_{0};  // what the one who puts in sees of `framesOut_`
};

}  // namespace zorvane
