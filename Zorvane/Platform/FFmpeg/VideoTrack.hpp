// The way of a picture from a sample to the movie.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Zorvane/Platform/AVFoundation/AVOutputSettings.hpp"
#include "Zorvane/Platform/FFmpeg/MediaTrack.hpp"
#include "Zorvane/Platform/FFmpeg/PicturePreparer.hpp"
#include "Zorvane/Platform/FFmpeg/VideoEncoder.hpp"
#include "Zorvane/Platform/FFmpeg/VideoTimeline.hpp"

namespace zorvane {

/// Places, converts and encodes pictures, and decides where key frames are. Allocates nothing per picture on its own
/// account.
class VideoTrack final : public MediaTrack {
  public:
    VideoTrack(const AVVideoSettings& settings, const std::string& encoderName);

    MediaTrackFormat format() const override;
    void startSession(CMTime time) override { timeline_.startAt(time); }
    void endSession(CMTime time) override { timeline_.endAt(time); }
    std::optional<std::int64_t> endTick() const override { return timeline_.endTick(); }
    void append(const CMSampleBuffer& sample, PacketSink& sink) override;
    void drain(PacketSink& sink) override;

  private:
    VideoEncoder::PictureKind kindOf(const VideoTimeline::Place& place);
    void moveTo(PacketSink& sink, bool replacesLast);

    VideoTimeline timeline_;
    VideoEncoder encoder_;
    PicturePreparer preparer_;
    FFmpegHandle<AVPacket> packet_;
    const std::int64_t keyFrameTicks_;
    std::int64_t nextKeyFrame_ = 0;
};

}  // namespace zorvane
