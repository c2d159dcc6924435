#include "Zorvane/Platform/FFmpeg/VideoTrack.hpp"

#include <cmath>

namespace zorvane {

VideoTrack::VideoTrack(const AVVideoSettings& settings, const std::string& encoderName)
    : encoder_(settings, encoderName),
      preparer_(encoder_.picture(), settings.width, settings.height, settings.colorProperties.primaries),
      packet_(makePacket()),
      keyFrameTicks_(std::llround(settings.compressionProperties.maxKeyFrameIntervalDuration * videoTimescale)) {}

void VideoTrack::append(const CMSampleBuffer& sample, MovieFile& movie) {
    if (!sample.imageBuffer()) {
        return;
    }
    const std::optional<VideoTimeline::Place> place = timeline_.place(sample.presentationTimeStamp());
    if (!place) {
        return;
    }
    preparer_.prepare(sample.imageBuffer());
    encoder_.encode(place->tick, kindOf(*place));
    moveTo(movie, place->replacesPrevious);
}

void VideoTrack::drain(MovieFile& movie) {
    encoder_.drain();
    moveTo(movie, false);
}

// A picture that replaces the one before it must not depend on it.
VideoEncoder::PictureKind VideoTrack::kindOf(const VideoTimeline::Place& place) {
    if (place.tick < nextKeyFrame_ && !place.replacesPrevious) {
        return VideoEncoder::PictureKind::any;
    }
    nextKeyFrame_ = place.tick + keyFrameTicks_;
    return VideoEncoder::PictureKind::key;
}

void VideoTrack::moveTo(MovieFile& movie, bool replacesLast) {
    while (encoder_.receive(*packet_)) {
        if (replacesLast) {
            movie.replaceLast(*packet_);
        } else {
            movie.append(*packet_);
        }
    }
}

}  // namespace zorvane
