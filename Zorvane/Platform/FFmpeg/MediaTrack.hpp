// The way of a track's samples to a file.
#pragma once

#include <cstdint>
#include <optional>

#include "Zorvane/Platform/CoreMedia/CMSampleBuffer.hpp"
#include "Zorvane/Platform/FFmpeg/MediaFile.hpp"

namespace zorvane {

/// Places samples on the session's time line, encodes them and hands the packets to a sink, always the same one.
///
/// A session is opened once, before the first sample, and may be closed once, with a later time. Used by one thread at
/// a time; errors are `NSError`s.
class MediaTrack {
  public:
    virtual ~MediaTrack() = default;

    virtual MediaTrackFormat format() const = 0;

    virtual void startSession(CMTime time) = 0;
    virtual void endSession(CMTime time) = 0;

    /// Where the track ends in its ticks, if that was said; after its start.
    virtual std::optional<std::int64_t> endTick() const = 0;

    /// A sample of another kind of media, or outside the session, is left out. Precondition: the session is open.
    virtual void append(const CMSampleBuffer& sample, PacketSink& sink) = 0;

    /// Hands over what the encoder still holds and what the track lacks until its end. No other call may follow.
    virtual void drain(PacketSink& sink) = 0;
};

}  // namespace zorvane
