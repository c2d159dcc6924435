#include "Zorvane/Platform/FFmpeg/SegmentFile.hpp"

#include <algorithm>
#include <array>
#include <utility>

#include "Zorvane/Platform/FFmpeg/SegmentCodecName.hpp"

extern "C" {
#include <libavcodec/codec_par.h>
#include <libavcodec/packet.h>
}

namespace zorvane {
namespace {

std::int64_t ticksOf(CMTime span, std::int32_t timescale) {
    using time_arithmetic::Int128;
    return static_cast<std::int64_t>(
        time_arithmetic::divideToNearest(Int128{span.value} * timescale, Int128{span.timescale}));
}

}  // namespace

SegmentFile::SegmentFile(const MediaTrackFormat& format, const AVAssetSegmenting& segmenting, Output output)
    : mediaType_(format.codec->codec_type == AVMEDIA_TYPE_AUDIO ? AVMediaType::audio : AVMediaType::video),
      timescale_(format.timescale),
      intervalTicks_(ticksOf(segmenting.preferredOutputSegmentInterval, format.timescale)),
      initialStartTime_(segmenting.initialSegmentStartTime),
      output_(std::move(output)),
      muxer_(AVFileType::mpeg4, std::span(&format, 1), Muxer::Form::segmented),
      nextCut_(intervalTicks_) {
    muxer_.sink().keepFrom(0);
}

void SegmentFile::append(AVPacket& packet) {
    const std::int64_t heldTicks = timescale_ / 2;
    noteDuration(packet.pts);
    if (nextBegin_ && packet.pts - packets_.tickAt(*nextBegin_) >= heldTicks) {
        writeFirst(*std::exchange(nextBegin_, std::nullopt));
    }
    if (beginsSegment(packet)) {
        nextBegin_ = packets_.size();
        nextCut_ += intervalTicks_;
    }
    packets_.append(packet);
}

void SegmentFile::replaceLast(AVPacket& packet) {
    packets_.dropLast();
    packets_.append(packet);
}

bool SegmentFile::beginsSegment(const AVPacket& packet) const {
    return !packets_.isEmpty() && !nextBegin_ && (packet.flags & AV_PKT_FLAG_KEY) != 0 &&
           packet.pts + packet.duration / 2 >= nextCut_;
}

// How long a picture lasts is known when the next one is there.
void SegmentFile::noteDuration(std::int64_t endTick) {
    if (!packets_.isEmpty() && packets_.last().duration == 0) {
        packets_.last().duration = endTick - packets_.lastTick();
    }
}

void SegmentFile::finish(std::span<const std::optional<std::int64_t>> endTicks) {
    endAt(endTicks.front());
    if (nextBegin_ && *nextBegin_ < packets_.size()) {
        writeFirst(*nextBegin_);
    }
    if (!packets_.isEmpty()) {
        writeFirst(packets_.size());
    }
}

void SegmentFile::endAt(std::optional<std::int64_t> endTick) {
    if (!endTick) {
        return;
    }
    const std::size_t fewest = isInitialized_ ? 0 : 1;
    while (packets_.size() > fewest && packets_.lastTick() >= *endTick) {
        packets_.dropLast();
    }
    if (!packets_.isEmpty()) {
        packets_.last().duration = std::max<std::int64_t>(*endTick - packets_.lastTick(), 1);
    }
}

/// Hands out the first packets as a segment.
void SegmentFile::writeFirst(std::size_t count) {
    for (std::size_t index = 0; index < count; ++index) {
        muxer_.write(0, *packets_[index].content);
    }
    if (!std::exchange(isInitialized_, true)) {
        writeInitialization();
    }
    muxer_.cutFragment();
    const AVPacket& last = *packets_[count - 1].content;
    const CMTime begin = timeAt(packets_.tickAt(0));
    const AVAssetSegmentReport report{.mediaType = mediaType_,
                                      .earliestPresentationTimeStamp = begin,
                                      .duration = timeAt(last.pts + last.duration) - begin,
                                      .codecName = codecName_};
    output_(muxer_.sink().kept(), AVAssetSegmentType::separable, report);
    muxer_.sink().keepFrom(muxer_.sink().position());
    packets_.dropFirst(count);
}

// The first cut gives the header only.
void SegmentFile::writeInitialization() {
    muxer_.cutFragment();
    codecName_ = segmentCodecName(muxer_.sink().kept());
    output_(muxer_.sink().kept(), AVAssetSegmentType::initialization, std::nullopt);
    muxer_.sink().keepFrom(muxer_.sink().position());
}

// The padding before the start of sound is not heard.
CMTime SegmentFile::timeAt(std::int64_t tick) const {
    return initialStartTime_ + CMTime::make(std::max<std::int64_t>(tick, 0), timescale_);
}

}  // namespace zorvane
