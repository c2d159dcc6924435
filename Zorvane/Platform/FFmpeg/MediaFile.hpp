// What the encoded packets of several tracks are written to.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "Zorvane/Platform/FFmpeg/FFmpegHandles.hpp"

namespace zorvane {

/// What a file must know of a track before its first packet.
struct MediaTrackFormat {
    FFmpegHandle<AVCodecParameters> codec;
    std::int32_t timescale = 0;  ///< ticks of the track's time per second
};

/// Takes the packets of one track. Errors are `NSError`s.
class PacketSink {
  public:
    virtual ~PacketSink() = default;

    /// Moves the content out of `packet`, of which both times are set to its tick, later than those of all before.
    /// Tick 0 is the session's start; sound begins earlier, by the padding that its decoder needs and that is not
    /// heard. A packet without a duration, such as a picture's, lasts until the next one.
    virtual void append(AVPacket& packet) = 0;

    /// The same, but the packet takes the place of the last one. Precondition: there is one, and it has no duration.
    virtual void replaceLast(AVPacket& packet) = 0;
};

/// A file, or a row of them, that tracks are written to at the same time. Tracks need not keep step with each other:
/// one of them may be late, or silent for good. Used by one thread at a time. Errors are `NSError`s; after one no other
/// operation may follow. Destroying an unfinished file leaves what has been written.
class MediaFile {
  public:
    virtual ~MediaFile() = default;

    /// The entry of a track, by its place among the formats that the file was made with. Lives as long as the file.
    virtual PacketSink& track(std::size_t index) = 0;

    /// Writes what has not been written.
    virtual void flush() = 0;

    /// The number of the piece that waits to be written, or nothing if none does. Whoever sees the same number for
    /// longer than it wants to lose in a crash calls `flush`.
    virtual std::optional<std::uint64_t> waitingFragment() const = 0;

    /// No track has had a packet.
    virtual bool isEmpty() const = 0;

    /// Completes the file. Each track that has an end, given in its ticks, lasts exactly until then: the last packet
    /// before it is lengthened or shortened, later ones are left out. Without an end a track lasts as long as its
    /// packets. Precondition: not empty.
    virtual void finish(std::span<const std::optional<std::int64_t>> endTicks) = 0;
};

}  // namespace zorvane
