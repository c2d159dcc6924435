// A movie that can be played whenever the writing is cut off, and that is an ordinary one once it is finished.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "Zorvane/Platform/FFmpeg/MediaFile.hpp"
#include "Zorvane/Platform/FFmpeg/MovieTrack.hpp"
#include "Zorvane/Platform/FFmpeg/Muxer.hpp"
#include "Zorvane/Platform/Foundation/OutputFile.hpp"

namespace zorvane {

/// Puts the packets of its tracks into one file. While it grows the file is a fragmented movie, whole after each
/// fragment:
///
///     ftyp | free | moov (no samples) | moof mdat | moof mdat | ...
///
/// To finish it, an index of all samples is appended, and `free`, which was made large enough for that, becomes the
/// header of one `mdat` box which spans everything in between:
///
///     ftyp | free | mdat (moov moof mdat moof mdat ...) | moov (all samples)
///
/// So nothing is ever copied, finishing costs the size of the index, and a reader finds a whole movie at every moment.
/// The index is made by a second muxer that is given the same packets at the positions where they lie in the file.
///
/// A fragment is written when it holds enough of any track; no track waits for another one. After an error the file
/// ends with its last whole fragment.
class MovieFile final : public MediaFile {
  public:
    /// Takes an empty file. Nothing is written before the first packets.
    MovieFile(std::unique_ptr<OutputFile> file, AVFileType fileType, std::span<const MediaTrackFormat> formats);

    PacketSink& track(std::size_t index) override { return entries_[index]; }
    void flush() override;
    std::optional<std::uint64_t> waitingFragment() const override;
    bool isEmpty() const override;
    /// Then the file is on the disk, and closed.
    void finish(std::span<const std::optional<std::int64_t>> endTicks) override;

  private:
    class Entry final : public PacketSink {
      public:
        Entry(MovieFile& movie, MovieTrack& track) : movie_(movie), track_(track) {}
        void append(AVPacket& packet) override;
        void replaceLast(AVPacket& packet) override { track_.replaceLast(packet); }

      private:
        MovieFile& movie_;
        MovieTrack& track_;
    };

    void releaseHeldBehind();
    void writeFragment();
    void reserveHeader(std::vector<std::byte>& bytes);
    void markInFile(std::span<const std::byte> bytes, std::uint64_t begin);
    void writeIndex();
    void appendToFile(std::span<const std::byte> bytes);

    const std::unique_ptr<OutputFile> file_;
    std::uint64_t fileSize_ = 0;
    std::uint64_t reservedHeader_ = 0;  // where the box `free` lies
    std::uint64_t fragmentNumber_ = 0;
    Muxer fragments_;
    Muxer index_;
    std::deque<MovieTrack> tracks_;
    std::deque<Entry> entries_;  // one for each track
};

}  // namespace zorvane
