#include "Zorvane/Platform/Linux/PipeWire/SoundIntake.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

namespace zorvane {
namespace {

/// Of a cycle's time against the clock's own count. More is no jitter and no drift: one of the two has jumped.
constexpr std::chrono::milliseconds mostDisagreement{100};
constexpr std::uint32_t silentClock = UINT32_MAX;  // counts the silence that is put; no node has this number
constexpr std::uint32_t silentFrames = 4096;       // are put at once

std::chrono::nanoseconds lengthOf(std::int64_t frames, double rate) {
    return std::chrono::nanoseconds(std::llround(static_cast<double>(frames) / rate * 1e9));
}

AVAudioFormat sourceFormat(double rate, std::uint32_t channelCount) {
    return {.commonFormat = AVAudioCommonFormat::float32, .sampleRate = rate, .channelCount = channelCount};
}

}  // namespace

std::chrono::nanoseconds heardAt(const SoundCycle& cycle, const PipeWireSoundDistance& distance) {
    const std::chrono::nanoseconds latency = distance.latency.at(cycle.frames, cycle.rate);
    return distance.side == PipeWireSoundDistance::Side::recorded ? cycle.time - latency : cycle.time + latency;
}

SoundIntake::SoundIntake(const AVAudioFormat& output, AVAudioConverting& converting, SoundAligner::Sink sink)
    : output_(output),
      converting_(converting),
      sink_(std::move(sink)),
      silence_(silentFrames * output.channelCount) {}

void SoundIntake::take(const SoundCycle& cycle, const SoundRing::Parts& frames,
                       const PipeWireSoundDistance& distance) {
    const Place place{cycle, distance, zorvane::heardAt(cycle, distance)};
    if (last_ && last_->cycle.clock == silentClock) {
        fillUntil(place.heardAt);
    }
    put(place, frames);
}

void SoundIntake::fillUntil(std::chrono::nanoseconds time) {
    end_ = end_.value_or(time);
    const double rate = rate_ > 0 ? rate_ : output_.sampleRate;
    auto missing = static_cast<std::int64_t>(std::chrono::duration<double>(time - *end_).count() * rate);
    std::int64_t position = 0;
    if (last_ && last_->cycle.clock == silentClock) {
        position = last_->cycle.position + last_->cycle.frames;
    }
    while (missing > 0) {
        const auto frames = static_cast<std::uint32_t>(std::min<std::int64_t>(missing, silentFrames));
        const SoundCycle cycle{silentClock, position, *end_, rate, frames};
        put({cycle, {}, cycle.time}, {std::span(silence_).first(std::size_t{frames} * output_.channelCount), {}});
        position += frames;
        missing -= frames;
    }
}

void SoundIntake::put(const Place& place, const SoundRing::Parts& frames) {
    const SoundCycle& cycle = place.cycle;
    prepareAligner(cycle.rate);
    if (!isContinued(place)) {
        aligner_->restart();
    }
    const auto firstFrames = static_cast<std::int64_t>(frames.first.size() / output_.channelCount);
    process(cycle.position, place.heardAt, frames.first);
    process(cycle.position + firstFrames, place.heardAt + lengthOf(firstFrames, cycle.rate), frames.second);
    last_ = place;
    end_ = place.heardAt + lengthOf(cycle.frames, cycle.rate);
}

bool SoundIntake::isContinued(const Place& place) const {
    if (!last_ || last_->cycle.clock != place.cycle.clock || last_->cycle.rate != place.cycle.rate ||
        last_->distance != place.distance) {
        return false;
    }
    const std::int64_t advance = place.cycle.position - last_->cycle.position;
    const auto disagreement = place.heardAt - last_->heardAt - lengthOf(advance, place.cycle.rate);
    return advance >= last_->cycle.frames && std::chrono::abs(disagreement) < mostDisagreement;
}

void SoundIntake::prepareAligner(double rate) {
    if (rate != rate_) {
        rate_ = rate;
        aligner_ = std::make_unique<SoundAligner>(sourceFormat(rate, output_.channelCount), output_, converting_,
                                                  [this](const CMSampleBuffer& sample) { deliver(sample); });
    }
}

void SoundIntake::process(std::int64_t position, std::chrono::nanoseconds time, std::span<const float> frames) {
    if (!frames.empty()) {
        aligner_->process({.position = position, .hostTime = time, .frames = std::as_bytes(frames)});
    }
}

/// An aligner never goes back; one that follows another of another rate may begin before the other's end.
void SoundIntake::deliver(const CMSampleBuffer& sample) {
    if (deliveredUntil_ && sample.presentationTimeStamp() < *deliveredUntil_) {
        return;
    }
    deliveredUntil_ = sample.presentationTimeStamp() + sample.duration();
    sink_(sample);
}

}  // namespace zorvane
