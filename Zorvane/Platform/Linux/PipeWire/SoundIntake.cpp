#include "Zorvane/Platform/Linux/PipeWire/SoundIntake.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

#include "Zorvane/Platform/AVFoundation/AVError.hpp"
#include "Zorvane/Platform/Foundation/NSError.hpp"

namespace zorvane {
namespace {

constexpr std::uint32_t silentClock = UINT32_MAX;  // counts the silence that is put; no node has this number
constexpr std::uint32_t silentFrames = 4096;       // are put at once

std::chrono::nanoseconds lengthOf(std::int64_t frames, double rate) {
    return std::chrono::nanoseconds(std::llround(static_cast<double>(frames) / rate * 1e9));
}

std::int64_t framesIn(std::chrono::nanoseconds time, double rate) {
    return static_cast<std::int64_t>(std::chrono::duration<double>(time).count() * rate);
}

AVAudioFormat sourceFormat(double rate, std::uint32_t channelCount) {
    return {.commonFormat = AVAudioCommonFormat::float32, .sampleRate = rate, .channelCount = channelCount};
}

}  // namespace

std::chrono::nanoseconds heardAt(const SoundCycle& cycle, const PipeWireSoundDistance& distance) {
    const std::chrono::nanoseconds latency = distance.latency.at(cycle.frames, cycle.rate);
    if (distance.side == PipeWireSoundDistance::Side::recorded) {
        return cycle.time - latency;
    }
    const bool isOfLastCycle = distance.monitoredSink == cycle.clock;
    return cycle.time + latency - (isOfLastCycle ? lengthOf(cycle.frames, cycle.rate) : std::chrono::nanoseconds(0));
}

SoundIntake::SoundIntake(std::uint32_t channelCount, const AVAudioFormat& output, AVAudioConverting& converting,
                         SoundAligner::Sink sink)
    : channelCount_(channelCount),
      output_(output),
      converting_(converting),
      sink_(std::move(sink)),
      silence_(silentFrames * channelCount) {}

void SoundIntake::take(const SoundCycle& cycle, const SoundRing::Parts& frames, const PipeWireSoundDistance& distance) {
    if (!(cycle.rate > 0) || !std::isfinite(cycle.rate)) {
        last_.reset();
        throw NSError(AVFoundationErrorDomain, AVErrorUnknown,
                      {"PipeWire's clock tells no rate, so its sound has no place in time.", nullptr, {}});
    }
    const Place place{cycle, zorvane::heardAt(cycle, distance)};
    if (fills_ && last_ && !isContinued(place)) {
        fillUntil(place.heardAt + lengthOf(2, rate_));  // to cut two frames of sound is better than to leave a rest
    }
    put(place, frames);
}

bool SoundIntake::isSilent() const {
    return last_ && last_->cycle.clock == silentClock;
}

void SoundIntake::fillUntil(std::chrono::nanoseconds time) {
    fills_ = true;
    end_ = end_.value_or(time);
    prepareAligner(rate_ > 0 ? rate_ : output_.sampleRate);
    auto missing = framesIn(time - *end_, rate_);
    if (missing > 0 && !isSilent()) {
        endSound();
        missing = framesIn(time - *end_, rate_);
    }
    while (missing > 0) {
        const auto frames = static_cast<std::uint32_t>(std::min<std::int64_t>(missing, silentFrames));
        const std::int64_t position = isSilent() ? last_->cycle.position + last_->cycle.frames : 0;
        const SoundCycle cycle{silentClock, position, *end_, rate_, frames};
        put({cycle, cycle.time}, {std::span(silence_).first(std::size_t{frames} * channelCount_), {}});
        missing -= frames;
    }
}

/// The sound that was handed over may end a little beside where the last cycle's time says.
void SoundIntake::endSound() {
    aligner_->restart();
    if (deliveredUntil_) {
        end_ = std::chrono::nanoseconds(std::llround(deliveredUntil_->seconds() * 1e9));
    }
}

void SoundIntake::put(const Place& place, const SoundRing::Parts& frames) {
    const SoundCycle& cycle = place.cycle;
    prepareAligner(cycle.rate);
    if (!isContinued(place)) {
        aligner_->restart();
    }
    last_.reset();  // after an error the aligner begins anew
    const auto firstFrames = static_cast<std::int64_t>(frames.first.size() / channelCount_);
    process(cycle.position, place.heardAt, frames.first);
    process(cycle.position + firstFrames, place.heardAt + lengthOf(firstFrames, cycle.rate), frames.second);
    last_ = place;
    end_ = place.heardAt + lengthOf(cycle.frames, cycle.rate);
}

/// What jumps within one clock is the aligner's.
bool SoundIntake::isContinued(const Place& place) const {
    return last_ && last_->cycle.clock == place.cycle.clock && last_->cycle.rate == place.cycle.rate &&
           last_->distance() == place.distance();
}

void SoundIntake::prepareAligner(double rate) {
    if (aligner_ && rate == rate_) {
        return;
    }
    const AVAudioFormat source = sourceFormat(rate, channelCount_);
    if (aligner_) {
        aligner_->restart(source);
    } else {
        aligner_ = std::make_unique<SoundAligner>(source, output_, converting_,
                                                  [this](const CMSampleBuffer& sample) { deliver(sample); });
    }
    rate_ = rate;
}

void SoundIntake::process(std::int64_t position, std::chrono::nanoseconds time, std::span<const float> frames) {
    if (!frames.empty()) {
        aligner_->process({.position = position, .hostTime = time, .frames = std::as_bytes(frames)});
    }
}

void SoundIntake::deliver(const CMSampleBuffer& sample) {
    deliveredUntil_ = sample.presentationTimeStamp() + sample.duration();
    sink_(sample);
}

}  // namespace zorvane
