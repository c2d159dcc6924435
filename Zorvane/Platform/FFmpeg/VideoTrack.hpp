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
///
/// A file wants key frames now and then, and a picture that comes anyway becomes one. Segments want them exactly at
/// their cuts: there the picture on show is encoded once more. So pictures seconds apart, as of a still screen, don't
/// make a segment longer, and the segments of pictures and sound stay in step.
class VideoTrack final : public MediaTrack {
  public:
    VideoTrack(const AVVideoSettings& settings, const std::string& encoderName);
    /// A track that is cut at each multiple of `segmentInterval`; key frames are there and nowhere else.
    VideoTrack(const AVVideoSettings& settings, const std::string& encoderName, CMTime segmentInterval);

    MediaTrackFormat format() const override;
    void startSession(CMTime time) override { timeline_.startAt(time); }
    void endSession(CMTime time) override { timeline_.endAt(time); }
    std::optional<std::int64_t> endTick() const override { return timeline_.endTick(); }
    void append(const CMSampleBuffer& sample, PacketSink& sink) override;
    void drain(PacketSink& sink) override;

  private:
    VideoTrack(const AVVideoSettings& settings, const std::string& encoderName, std::int64_t keyFrameTicks, bool isCut);
    void repeatAtCuts(std::int64_t endTick, PacketSink& sink);
    VideoEncoder::PictureKind kindOf(const VideoTimeline::Place& place);
    void moveTo(PacketSink& sink, bool replacesLast);

    VideoTimeline timeline_;
    VideoEncoder encoder_;
    PicturePreparer preparer_;
    FFmpegHandle<AVPacket> packet_;
    const std::int64_t keyFrameTicks_;
    const bool isCut_;
    std::int64_t nextKeyFrame_ = 0;
};

}  // namespace zorvane
