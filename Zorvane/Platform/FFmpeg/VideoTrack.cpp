#include "Zorvane/Platform/FFmpeg/VideoTrack.hpp"

#include <cmath>

namespace zorvane {

VideoTrack::VideoTrack(const AVVideoSettings& settings, const std::string& encoderName)
    : VideoTrack(settings, encoderName,
                 std::llround(settings.compressionProperties.maxKeyFrameIntervalDuration * videoTimescale), false) {}

VideoTrack::VideoTrack(const AVVideoSettings& settings, const std::string& encoderName, CMTime segmentInterval)
    : VideoTrack(settings, encoderName, std::llround(segmentInterval.seconds() * videoTimescale), true) {}

VideoTrack::VideoTrack(const AVVideoSettings& settings, const std::string& encoderName, std::int64_t keyFrameTicks,
                       bool isCut)
    : encoder_(settings, encoderName),
      preparer_(encoder_.picture(), settings.width, settings.height, settings.colorProperties),
      packet_(makePacket()),
      keyFrameTicks_(keyFrameTicks),
      isCut_(isCut) {}

MediaTrackFormat VideoTrack::format() const {
    return {encoder_.codecParameters(), videoTimescale};
}

void VideoTrack::append(const CMSampleBuffer& sample, PacketSink& sink) {
    if (!sample.imageBuffer()) {
        return;
    }
    const std::optional<VideoTimeline::Place> place = timeline_.place(sample.presentationTimeStamp());
    if (!place) {
        return;
    }
    repeatAtCuts(place->tick, sink);
    preparer_.prepare(sample.imageBuffer());
    encoder_.encode(place->tick, kindOf(*place));
    moveTo(sink, place->replacesPrevious);
}

void VideoTrack::drain(PacketSink& sink) {
    repeatAtCuts(timeline_.endTick().value_or(0), sink);
    encoder_.drain();
    moveTo(sink, false);
}

// The encoder keeps the content of the picture on show.
void VideoTrack::repeatAtCuts(std::int64_t endTick, PacketSink& sink) {
    while (isCut_ && nextKeyFrame_ > 0 && nextKeyFrame_ < endTick) {
        encoder_.encode(nextKeyFrame_, VideoEncoder::PictureKind::key);
        moveTo(sink, false);
        nextKeyFrame_ += keyFrameTicks_;
    }
}

// A picture that replaces the one before it must not depend on it.
VideoEncoder::PictureKind VideoTrack::kindOf(const VideoTimeline::Place& place) {
    if (place.tick < nextKeyFrame_ && !place.replacesPrevious) {
        return VideoEncoder::PictureKind::any;
    }
    nextKeyFrame_ = place.tick + keyFrameTicks_;
    return VideoEncoder::PictureKind::key;
}

void VideoTrack::moveTo(PacketSink& sink, bool replacesLast) {
    while (encoder_.receive(*packet_)) {
        if (replacesLast) {
            sink.replaceLast(*packet_);
        } else {
            sink.append(*packet_);
        }
    }
}

}  // namespace zorvane
