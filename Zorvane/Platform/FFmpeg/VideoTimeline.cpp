#include "Zorvane/Platform/FFmpeg/VideoTimeline.hpp"

#include <algorithm>

namespace zorvane {

void VideoTimeline::endAt(CMTime time) {
    end_ = time;
    endTick_ = std::max<std::int64_t>(ticksFromStart(time), 1);
}

std::optional<VideoTimeline::Place> VideoTimeline::place(CMTime presentationTime) {
    if (!presentationTime.isNumeric() || (end_ && presentationTime >= *end_)) {
        return std::nullopt;
    }
    if (!lastTick_) {
        lastTick_ = 0;
        return Place{};
    }
    if (*lastTick_ == 0 && presentationTime <= *start_) {
        return Place{0, true};
    }
    const std::int64_t tick = std::max(ticksFromStart(presentationTime), *lastTick_ + 1);
    if (endTick_ && tick >= *endTick_) {
        return std::nullopt;
    }
    lastTick_ = tick;
    return Place{tick, false};
}

std::int64_t VideoTimeline::ticksFromStart(CMTime time) const {
    using time_arithmetic::Int128;
    const Int128 difference = Int128{time.value} * start_->timescale - Int128{start_->value} * time.timescale;
    const Int128 unitsPerSecond = Int128{time.timescale} * start_->timescale;
    return static_cast<std::int64_t>(time_arithmetic::divideToNearest(difference * videoTimescale, unitsPerSecond));
}

}  // namespace zorvane
