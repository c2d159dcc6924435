#include "Zorvane/Platform/FFmpeg/MovieTrack.hpp"

#include <algorithm>
#include <utility>

extern "C" {
#include <libavcodec/codec_par.h>
#include <libavcodec/packet.h>
}

namespace zorvane {
namespace {

constexpr std::int64_t soundRecallSeconds = 10;

/// Of a picture that nothing has followed yet. A still screen gives a picture each second.
constexpr std::int64_t assumedDuration(std::int64_t timescale) {
    return timescale * 9 / 10;
}

void setTick(AVPacket& packet, std::int64_t tick) {
    packet.pts = tick;
    packet.dts = tick;
}

}  // namespace

MovieTrack::MovieTrack(Muxer& fragments, Muxer& index, std::size_t number, const MediaTrackFormat& format)
    : fragments_(fragments),
      index_(index),
      number_(number),
      timescale_(format.timescale),
      isSound_(format.codec->codec_type == AVMEDIA_TYPE_AUDIO) {
    // Else a track that comes late is one without an edit list in the fragments, and its padding is heard.
    fragments_.jumpTo(number_, -format.codec->initial_padding);
}

void MovieTrack::append(AVPacket& packet) {
    if (!isEmpty()) {
        // Where the muxer is to be told of a jump there must be a tick between the two.
        setTick(packet, std::max(packet.pts, packets_.lastTick() + (jumps_ ? 2 : 1)));
        addLastToFragment(packet.pts - packets_.lastTick());
    }
    packets_.append(packet);
    if (packets_.last().duration > 0) {
        addLastToFragment(packets_.last().duration);
    }
}

void MovieTrack::replaceLast(AVPacket& packet) {
    if (!isHolding()) {
        append(packet);  // too late: both are there, the older one for a moment
        return;
    }
    packets_.dropLast();
    packets_.append(packet);
}

void MovieTrack::releaseHeld() {
    if (isHolding()) {
        addLastToFragment(assumedDuration(timescale_));
        jumps_ = true;
    }
}

void MovieTrack::addToIndex() {
    addToIndex(finalCount());
}

void MovieTrack::end(std::optional<std::int64_t> endTick) {
    while (endTick && packets_.size() > 1 && packets_.lastTick() >= *endTick) {
        packets_.dropLast();
    }
    if (!isEmpty()) {
        addLastToFragment(lastDuration(endTick));
    }
}

std::int64_t MovieTrack::newestTime() const {
    return microseconds(packets_.lastTick());
}

std::int64_t MovieTrack::waitingTime() const {
    const std::optional<std::int64_t> first = packets_.firstWaitingTick();
    return first ? microseconds(packets_.lastTick() - *first) : 0;
}

// A packet that a fragment has stays as it is in there.
void MovieTrack::addLastToFragment(std::int64_t duration) {
    AVPacket& last = packets_.last();
    last.duration = duration;
    if (isHolding()) {
        if (std::exchange(jumps_, false)) {
            fragments_.jumpTo(number_, last.pts);
        }
        fragments_.write(number_, last);
        packets_.markInFragment();
    }
}

std::int64_t MovieTrack::lastDuration(std::optional<std::int64_t> endTick) {
    const std::size_t count = packets_.size();
    if (endTick) {
        return std::max<std::int64_t>(*endTick - packets_.lastTick(), 1);
    }
    if (isSound_) {
        return packets_.last().duration;
    }
    return count > 1 ? packets_.lastTick() - packets_.tickAt(count - 2) : assumedDuration(timescale_);
}

std::size_t MovieTrack::finalCount() const {
    const std::int64_t recallTicks = isSound_ ? soundRecallSeconds * timescale_ : 0;
    std::size_t count = 0;
    while (count + 2 < packets_.size() && packets_.isInFile(count + 2) &&
           packets_.lastTick() - packets_.tickAt(count + 2) >= recallTicks) {
        ++count;
    }
    return count;
}

void MovieTrack::addToIndex(std::size_t count) {
    for (std::size_t next = 0; next < count; ++next) {
        indexPosition_ = packets_[next].mediaPosition.value_or(indexPosition_);
        index_.sink().seek(indexPosition_);
        index_.write(number_, *packets_[next].content);
        indexPosition_ = index_.sink().position();
    }
    packets_.dropFirst(count);
}

std::int64_t MovieTrack::microseconds(std::int64_t ticks) const {
    return ticks * 1'000'000 / timescale_;
}

}  // namespace zorvane
