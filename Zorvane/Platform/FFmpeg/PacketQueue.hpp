// The packets of one track that a movie has not finished with.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "Zorvane/Platform/FFmpeg/FFmpegHandles.hpp"

namespace zorvane {

/// Oldest first: some in the file, some in the fragment that is being put together, and last perhaps one that is held,
/// since how long it lasts is not known. The memory of packets is used again.
class PacketQueue {
  public:
    struct Packet {
        FFmpegHandle<AVPacket> content;
        std::optional<std::int64_t> mediaPosition;  ///< in the file; only of the first packet of a fragment
    };

    bool isEmpty() const { return packets_.empty(); }
    std::size_t size() const { return packets_.size(); }
    const Packet& operator[](std::size_t index) const { return packets_[index]; }
    AVPacket& last() { return *packets_.back().content; }

    std::int64_t tickAt(std::size_t index) const;
    /// Precondition: not empty.
    std::int64_t lastTick() const { return tickAt(packets_.size() - 1); }

    bool isInFile(std::size_t index) const { return index < inFile_; }
    bool isLastInFragment() const { return inFragment_ == packets_.size(); }
    /// The tick of the oldest packet that is not in the file, or nothing if all are.
    std::optional<std::int64_t> firstWaitingTick() const;

    /// Moves the content out of `content`.
    void append(AVPacket& content);
    void dropLast();
    void dropFirst(std::size_t count);

    /// The fragment has now been given the last packet too.
    void markInFragment() { inFragment_ = packets_.size(); }
    /// The fragment has been written to the file, this track's part of it to that position.
    void markInFile(std::int64_t mediaPosition);

  private:
    void recycle(Packet& packet);

    std::vector<Packet> packets_;
    std::size_t inFile_ = 0;      // so many of the first packets
    std::size_t inFragment_ = 0;  // including those in the file
    std::vector<FFmpegHandle<AVPacket>> spares_;
};

}  // namespace zorvane
