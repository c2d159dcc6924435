#include "Zorvane/Platform/FFmpeg/AudioTimeline.hpp"

#include <algorithm>

namespace zorvane {
namespace {

using time_arithmetic::divideToNearest;
using time_arithmetic::Int128;

/// A millisecond in frames.
constexpr std::int64_t tolerance(std::int64_t sampleRate) {
    return sampleRate / 1000;
}

/// Seconds as an exact fraction.
struct Span {
    Int128 units = 0;
    Int128 unitsPerSecond = 1;
};

Span difference(CMTime time, CMTime start) {
    return {Int128{time.value} * start.timescale - Int128{start.value} * time.timescale,
            Int128{time.timescale} * start.timescale};
}

}  // namespace

void AudioTimeline::endAt(CMTime time) {
    endFrame_ = std::max<std::int64_t>(trackFrame(time), 1);
}

AudioTimeline::Place AudioTimeline::place(CMTime time, std::uint32_t frameCount) {
    if (!time.isNumeric()) {
        return {};
    }
    const std::int64_t late = framesLate(time);
    const bool joinsSound = runBegin_ + runLength_ > 0;
    const std::int64_t tolerated = joinsSound ? tolerance(runRate_) : 0;
    Place place;
    if (late > tolerated) {
        runBegin_ = trackFrame(time);
        runLength_ = 0;
        place.runBegin = runBegin_;
    } else if (late < -tolerated) {
        place.skipped = static_cast<std::uint32_t>(std::min<std::int64_t>(-late, frameCount));
    }
    place.taken = frameCount - place.skipped;
    runLength_ += place.taken;
    return place;
}

void AudioTimeline::changeRate(std::int32_t sampleRate) {
    runBegin_ = runEnd();
    runLength_ = 0;
    runRate_ = sampleRate;
}

std::int64_t AudioTimeline::runEnd() const {
    return runBegin_ + static_cast<std::int64_t>(divideToNearest(Int128{runLength_} * rate_, runRate_));
}

// In frames of the run, counted from where it ends so far.
std::int64_t AudioTimeline::framesLate(CMTime time) const {
    const Span span = difference(time, *start_);
    const Int128 expected = Int128{runBegin_} * runRate_ + Int128{runLength_} * rate_;  // over the track's rate
    return static_cast<std::int64_t>(
        divideToNearest(span.units * runRate_ * rate_ - expected * span.unitsPerSecond, span.unitsPerSecond * rate_));
}

std::int64_t AudioTimeline::trackFrame(CMTime time) const {
    const Span span = difference(time, *start_);
    return static_cast<std::int64_t>(divideToNearest(span.units * rate_, span.unitsPerSecond));
}

}  // namespace zorvane
