// One track of a movie file: its packets' way into fragments and into the index.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "Zorvane/Platform/FFmpeg/MediaFile.hpp"
#include "Zorvane/Platform/FFmpeg/Muxer.hpp"
#include "Zorvane/Platform/FFmpeg/PacketQueue.hpp"

namespace zorvane {

/// How long a picture lasts is known only when the next one is there, so the last picture is held. `releaseHeld` gives
/// it to the fragment all the same, with an assumed duration; the next fragment says its own time, and the index gets
/// the exact duration. Sound knows its duration, and nothing of it is held.
///
/// The index can't be taken back, and an end may turn out to lie in the past. So packets reach the index late: a
/// picture when two newer ones are in the file, which leaves one to end with, though `releaseHeld` wrote the newest;
/// sound after ten seconds, which cost little memory.
class MovieTrack {
  public:
    /// Both muxers have this track at the place `number` among theirs, and outlive it.
    MovieTrack(Muxer& fragments, Muxer& index, std::size_t number, const MediaTrackFormat& format);

    void append(AVPacket& packet);

    /// Precondition: not empty.
    void replaceLast(AVPacket& packet);

    /// Gives the packet that is held, if there is one, to the fragment.
    void releaseHeld();

    /// The fragment was written; this track's part of it lies at that position.
    void markInFile(std::int64_t mediaPosition) { packets_.markInFile(mediaPosition); }

    /// Adds to the index what no end is expected to lie before.
    void addToIndex();

    /// Gives the rest to the fragment, see `MediaFile::finish`. Then, once that is in the file, to the index.
    void end(std::optional<std::int64_t> endTick);
    void addRestToIndex() { addToIndex(packets_.size()); }

    bool isEmpty() const { return packets_.isEmpty(); }
    bool isWaiting() const { return packets_.firstWaitingTick().has_value(); }
    bool isHolding() const { return !isEmpty() && !packets_.isLastInFragment(); }

    /// Microseconds from the session's start to the newest packet. Precondition: not empty.
    std::int64_t newestTime() const;
    /// Microseconds of media that the file doesn't have yet.
    std::int64_t waitingTime() const;

  private:
    void addLastToFragment(std::int64_t duration);
    std::int64_t lastDuration(std::optional<std::int64_t> endTick);
    std::size_t finalCount() const;
    void addToIndex(std::size_t count);
    std::int64_t microseconds(std::int64_t ticks) const;

    Muxer& fragments_;
    Muxer& index_;
    const std::size_t number_;
    const std::int64_t timescale_;
    const bool isSound_;
    bool jumps_ = false;              // the last fragment ends with an assumed duration
    std::int64_t indexPosition_ = 0;  // in the file, behind the last packet in the index
    PacketQueue packets_;
};

}  // namespace zorvane
