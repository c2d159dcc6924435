// A stock muxer of the FFmpeg libraries that writes to memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "Zorvane/Platform/AVFoundation/AVAssetWriter.hpp"
#include "Zorvane/Platform/FFmpeg/MediaFile.hpp"

namespace zorvane {

/// Where a muxer writes: a file of any size of which only a part is kept.
class MemorySink {
  public:
    MemorySink();
    MemorySink(const MemorySink&) = delete;
    MemorySink& operator=(const MemorySink&) = delete;

    AVIOContext* context() const { return context_.get(); }

    /// From here on everything written at `position` or behind it is kept, and what was kept before is forgotten.
    void keepFrom(std::int64_t position);
    /// What lies in the file from there on: a muxer goes back to correct the sizes of its boxes.
    std::vector<std::byte>& kept() { return kept_; }

    std::int64_t position() const;
    void seek(std::int64_t position);
    /// Hands over what the muxer has written so far. Throws `NSError` if any of it was lost.
    void flush();

  private:
    static int write(void* sink, std::uint8_t* bytes, int count);
    static std::int64_t seek(void* sink, std::int64_t offset, int whence);
    int keep(const std::uint8_t* bytes, int count);

    FFmpegHandle<AVIOContext> context_;
    std::int64_t position_ = 0;
    std::int64_t keepFrom_ = 0;
    std::vector<std::byte> kept_;
};

/// One muxer. Packets have their times and durations set, in the ticks of their tracks, which go by their places among
/// the formats. Used by one thread at a time. All operations throw `NSError`.
class Muxer {
  public:
    /// Whole movies have their index in the trailer; fragmented ones get it in pieces; segmented ones are fragmented,
    /// and each fragment can be a file of its own behind the header.
    enum class Form : std::uint8_t { whole, fragmented, segmented };

    Muxer(AVFileType fileType, std::span<const MediaTrackFormat> formats, Form form);
    ~Muxer();
    Muxer(const Muxer&) = delete;
    Muxer& operator=(const Muxer&) = delete;

    MemorySink& sink() { return sink_; }

    /// The next packet of this track, which is its first of a fragment, lies at `tick`, wherever those before it seemed
    /// to end. For the first fragment: so does the track.
    void jumpTo(std::size_t track, std::int64_t tick);
    void write(std::size_t track, AVPacket& packet);
    void cutFragment();
    void writeTrailer();

  private:
    void addTrack(const MediaTrackFormat& format);
    void writeHeader(std::int32_t movieTimescale, Form form);

    MemorySink sink_;
    FFmpegHandle<AVFormatContext> context_;
};

}  // namespace zorvane
