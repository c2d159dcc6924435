// Puts pictures in their places on the track's time line.
#pragma once

#include <cstdint>
#include <optional>

#include "Zorvane/Platform/CoreMedia/CMTime.hpp"

namespace zorvane {

/// Units of a video track's time per second. Frame rates divide it without a rest, and a frame may last 6.6 hours
/// before the muxer's 31 bits for a duration are exceeded.
inline constexpr std::int32_t videoTimescale = 90000;

/// Turns times of pictures into ticks from the session's start, each rounded once from the exact difference.
///
/// The track begins at tick 0 whatever the times: the first picture is shown from the start, be it older than that or
/// younger, and of several older ones the newest counts. Ticks rise strictly; where two pictures fall on one tick, the
/// later one moves to the next. Nothing lies at the session's end or after it.
class VideoTimeline {
  public:
    struct Place {
        std::int64_t tick = 0;
        /// The picture before this one lay before the session's start too, and never gets shown.
        bool replacesPrevious = false;
    };

    /// Precondition: a numeric time; for the end, not before the start was set.
    void startAt(CMTime time) { start_ = time; }
    void endAt(CMTime time);

    bool hasStart() const { return start_.has_value(); }

    /// Where the next picture goes, or nothing if it isn't part of the session. Precondition: the start is set.
    std::optional<Place> place(CMTime presentationTime);

    /// Where the track ends, if that was said; never before the first tick is over.
    std::optional<std::int64_t> endTick() const { return endTick_; }

  private:
    std::int64_t ticksFromStart(CMTime time) const;

    std::optional<CMTime> start_;
    std::optional<CMTime> end_;
    std::optional<std::int64_t> endTick_;
    std::optional<std::int64_t> lastTick_;
};

}  // namespace zorvane
