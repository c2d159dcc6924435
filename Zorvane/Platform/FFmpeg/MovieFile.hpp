// A movie that can be played whenever the writing is cut off, and that is an ordinary one once it is finished.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "Zorvane/Platform/FFmpeg/FFmpegHandles.hpp"
#include "Zorvane/Platform/FFmpeg/Muxer.hpp"
#include "Zorvane/Platform/FFmpeg/OutputFile.hpp"

namespace zorvane {

/// Puts the packets of one video track into a file. While it grows the file is a fragmented movie, whole after each
/// fragment:
///
///     ftyp | free | moov (no samples) | moof mdat | moof mdat | ...
///
/// To finish it, an index of all samples is appended, and the header of `free`, which was made large enough for that,
/// becomes that of one `mdat` box which spans everything in between:
///
///     ftyp | mdat (moov moof mdat moof mdat ...) | moov (all samples)
///
/// So nothing is ever copied, finishing costs the size of the index, and a reader finds a whole movie at every moment.
/// The index is made by a second muxer that is given the same packets at the positions where they lie in the file.
///
/// How long a picture lasts is known only when the next one is there, so the last packet is held. `flush` writes it all
/// the same, with an assumed duration; the next fragment says its own time, and the index gets the exact duration.
///
/// Used by one thread at a time. Errors are `NSError`s; after one the file ends with its last whole fragment, and no
/// other operation may follow.
class MovieFile {
  public:
    /// Takes an empty file. Nothing is written before the first packets.
    MovieFile(std::unique_ptr<OutputFile> file, AVFileType fileType, const AVCodecParameters& video);

    /// Moves the content out of `packet`, of which the tick is set, later than all before. When there are enough of
    /// them, packets are written to the file.
    void append(AVPacket& packet);

    /// The same, but the packet takes the place of the last one. Precondition: not empty.
    void replaceLast(AVPacket& packet);

    /// Writes what has not been written.
    void flush();

    /// The number of the fragment that waits to be written, or nothing if none does.
    std::optional<std::uint64_t> waitingFragment() const;

    bool isEmpty() const { return packets_.empty(); }

    /// The last picture lasts until `endTick`, and those that begin then or later are left out, which goes back to the
    /// last picture but one that was written; without an end the last picture lasts as long as the one before it. Then
    /// the file is complete, on the disk, and closed. Precondition: not empty.
    void finish(std::optional<std::int64_t> endTick);

  private:
    /// A packet that is not in the index yet.
    struct Packet {
        FFmpegHandle<AVPacket> content;
        bool isInFragment = false;                  ///< the muxer of fragments has it
        bool isInFile = false;                      ///< so has the file
        std::optional<std::int64_t> mediaPosition;  ///< in the file; only of the first packet of a fragment
    };

    Packet takePacket(AVPacket& content);
    void recycle(Packet& packet);
    void dropLast();
    void addLastToFragment(std::int64_t duration);
    std::int64_t lastDuration(std::optional<std::int64_t> endTick) const;
    bool isFragmentLongEnough(std::int64_t tick) const;
    void writeFragment();
    std::size_t finalCount() const;
    void addToIndex(std::size_t count);
    void writeIndex();
    void appendToFile(std::span<const std::byte> bytes);

    const std::unique_ptr<OutputFile> file_;
    std::uint64_t fileSize_ = 0;
    std::uint64_t reservedHeader_ = 0;  ///< where the box `free` lies
    std::uint64_t fragmentNumber_ = 0;
    Muxer fragments_;
    bool jumps_ = false;  ///< the last fragment ends with an assumed duration
    Muxer index_;
    std::vector<Packet> packets_;  ///< oldest first: some in the file, some in the fragment, one that is held
    std::vector<FFmpegHandle<AVPacket>> spares_;
};

}  // namespace zorvane
