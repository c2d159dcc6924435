#include "Zorvane/Platform/Linux/PipeWire/SoundRing.hpp"

#include <algorithm>

namespace zorvane {

SoundRing::SoundRing(std::uint32_t channelCount, std::size_t frames, std::size_t cycles)
    : channelCount_(channelCount), frameCapacity_(frames), samples_(frames * channelCount), cycles_(cycles) {}

bool SoundRing::push(const SoundCycle& cycle, std::span<const float* const> channels) {
    const std::uint64_t count = cyclesIn_.load(std::memory_order_relaxed);
    const std::uint64_t taken = cyclesOut_.load(std::memory_order_acquire);
    const std::uint64_t used = framesIn_ - framesFreed_.load(std::memory_order_acquire);
    if (count - taken == cycles_.size() || frameCapacity_ - used < cycle.frames) {
        return false;
    }
    const std::size_t untilEnd = std::min<std::size_t>(cycle.frames, frameCapacity_ - framesIn_ % frameCapacity_);
    interleave(channels, 0, untilEnd, framesIn_ % frameCapacity_);
    interleave(channels, untilEnd, cycle.frames - untilEnd, 0);
    cycles_[count % cycles_.size()] = cycle;
    framesIn_ += cycle.frames;
    cyclesIn_.store(count + 1, std::memory_order_release);
    return true;
}

void SoundRing::interleave(std::span<const float* const> channels, std::size_t from, std::size_t count,
                           std::uint64_t to) {
    for (std::uint32_t channel = 0; channel < channelCount_; ++channel) {
        const float* source = channels[channel];
        float* target = samples_.data() + to * channelCount_ + channel;
        for (std::size_t frame = 0; frame < count; ++frame) {
            target[frame * channelCount_] = source ? source[from + frame] : 0.0f;
        }
    }
}

const SoundCycle* SoundRing::front() const {
    const std::uint64_t taken = cyclesOut_.load(std::memory_order_relaxed);
    return taken == cyclesIn_.load(std::memory_order_acquire) ? nullptr : &cycles_[taken % cycles_.size()];
}

SoundRing::Parts SoundRing::frontFrames() const {
    const std::size_t frames = front()->frames;
    const std::size_t begin = framesOut_ % frameCapacity_;
    const std::size_t untilEnd = std::min(frames, frameCapacity_ - begin);
    const std::span<const float> samples(samples_);
    return {samples.subspan(begin * channelCount_, untilEnd * channelCount_),
            samples.first((frames - untilEnd) * channelCount_)};
}

void SoundRing::pop() {
    framesOut_ += front()->frames;
    framesFreed_.store(framesOut_, std::memory_order_release);
    cyclesOut_.store(cyclesOut_.load(std::memory_order_relaxed) + 1, std::memory_order_release);
}

}  // namespace zorvane
