// A stock muxer of the FFmpeg libraries that writes to memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "Zorvane/Platform/AVFoundation/AVAssetWriter.hpp"
#include "Zorvane/Platform/FFmpeg/FFmpegHandles.hpp"

struct AVDictionary;

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

/// One muxer with one video track, of which the time runs in ticks of `VideoTimeline`. Packets have their times and
/// durations set. Used by one thread at a time. All operations throw `NSError`.
class Muxer {
  public:
    /// `flags` are those of the muxer's option "movflags"; null for none.
    Muxer(AVFileType fileType, const AVCodecParameters& video, const char* flags);
    ~Muxer();
    Muxer(const Muxer&) = delete;
    Muxer& operator=(const Muxer&) = delete;

    MemorySink& sink() { return sink_; }

    /// The next packet, which begins a fragment, lies at `tick`, wherever the packets before it seemed to end.
    void jumpTo(std::int64_t tick);
    void write(const AVPacket& packet);
    void cutFragment();
    void writeTrailer();

  private:
    void writeHeader(const char* flags);

    MemorySink sink_;
    FFmpegHandle<AVFormatContext> context_;
};

}  // namespace zorvane
