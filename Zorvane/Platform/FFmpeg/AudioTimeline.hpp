// Puts blocks of sound in their places on the track's time line.
#pragma once

#include <cstdint>
#include <optional>

#include "Zorvane/Platform/CoreMedia/CMTime.hpp"

namespace zorvane {

/// Decides what of each block is in the track, and where. The track's time runs in frames of its own rate from the
/// session's start; blocks may have any rate. Positions are computed from exact differences to the session's start,
/// each rounded once, so nothing adds up over hours.
///
/// Blocks that follow each other form a run, within which only frames are counted. A block joins its run if its time
/// says so to within a millisecond: times come rounded, in the coarsest case to milliseconds, and a cut or a piece of
/// silence would be heard as a click, while a displacement of a millisecond can't be seen against the picture. It can't
/// grow: it is measured against the session's start. A block that begins later than that starts a new run, in its
/// place. Of a block that begins earlier, what overlaps is left out; nothing lies before the session's start.
class AudioTimeline {
  public:
    /// `sampleRate` is the track's.
    explicit AudioTimeline(std::int32_t sampleRate) : rate_(sampleRate), runRate_(sampleRate) {}

    /// Precondition: a numeric time; for the end, not before the start was set.
    void startAt(CMTime time) { start_ = time; }
    void endAt(CMTime time);

    /// How many frames the track has, if that was said; at least one.
    std::optional<std::int64_t> endFrame() const { return endFrame_; }

    /// What is to be done with a block.
    struct Place {
        std::uint32_t skipped = 0;                  ///< frames at its begin that are left out
        std::uint32_t taken = 0;                    ///< frames after them that are in the track, in a row
        std::optional<std::int64_t> runBegin = {};  ///< it starts a new run at this frame of the track
    };

    /// The next block, of the rate of the run. Precondition: the start is set.
    Place place(CMTime time, std::uint32_t frameCount);

    /// Blocks of another format follow; they join the present ones without a gap.
    void changeRate(std::int32_t sampleRate);

    /// The frame of the track at which the sound placed so far ends.
    std::int64_t runEnd() const;

  private:
    std::int64_t framesLate(CMTime time) const;
    std::int64_t trackFrame(CMTime time) const;

    const std::int64_t rate_;
    std::optional<CMTime> start_;
    std::optional<std::int64_t> endFrame_;
    std::int64_t runRate_;
    std::int64_t runBegin_ = 0;   // a frame of the track
    std::int64_t runLength_ = 0;  // in frames of the run's rate
};

}  // namespace zorvane
