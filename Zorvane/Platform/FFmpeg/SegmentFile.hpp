// A track as a row of segments that are handed out one by one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>

#include "Zorvane/Platform/AVFoundation/AVAssetSegment.hpp"
#include "Zorvane/Platform/FFmpeg/MediaFile.hpp"
#include "Zorvane/Platform/FFmpeg/Muxer.hpp"
#include "Zorvane/Platform/FFmpeg/PacketQueue.hpp"

namespace zorvane {

/// Puts the packets of one track into fragmented MPEG-4 segments in memory. First comes the initialization, together
/// with the first segment; then a segment for each interval. A segment begins with the key frame nearest to a multiple
/// of the interval: sound, of which every packet is one, with the nearest packet; video exactly there if its encoder is
/// asked for key frames there, see `VideoTrack`.
///
/// A segment can't be taken back, and an end may turn out to lie in the past. So it is handed out when it has been over
/// for half a second: no end is expected to lie further back. What is kept in memory is one segment and that half
/// second.
class SegmentFile final : public MediaFile, private PacketSink {
  public:
    /// `data` is valid during the call. A media segment has a report.
    using Output = std::function<void(std::span<const std::byte> data, AVAssetSegmentType type,
                                      const std::optional<AVAssetSegmentReport>& report)>;

    /// The delegate in `segmenting` is not used.
    SegmentFile(const MediaTrackFormat& format, const AVAssetSegmenting& segmenting, Output output);

    PacketSink& track(std::size_t) override { return *this; }
    /// Does nothing: a segment is handed out when it is complete, and not before.
    void flush() override {}
    std::optional<std::uint64_t> waitingFragment() const override { return std::nullopt; }
    bool isEmpty() const override { return packets_.isEmpty() && !isInitialized_; }
    void finish(std::span<const std::optional<std::int64_t>> endTicks) override;

  private:
    void append(AVPacket& packet) override;
    void replaceLast(AVPacket& packet) override;

    bool beginsSegment(const AVPacket& packet) const;
    void noteDuration(std::int64_t endTick);
    void endAt(std::optional<std::int64_t> endTick);
    void writeFirst(std::size_t count);
    void writeInitialization();
    CMTime timeAt(std::int64_t tick) const;

    const AVMediaType mediaType_;
    const std::int32_t timescale_;
    const std::int64_t intervalTicks_;
    const CMTime initialStartTime_;
    const Output output_;
    Muxer muxer_;
    PacketQueue packets_;                   // of the segment and perhaps of the next one
    std::optional<std::size_t> nextBegin_;  // which of them is the next segment's first
    std::int64_t nextCut_;                  // where the segment after the newest packet's is to begin
    bool isInitialized_ = false;
    std::optional<std::string> codecName_;
};

}  // namespace zorvane
