// The way of a picture from a sample to the movie.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Zorvane/Platform/AVFoundation/AVOutputSettings.hpp"
#include "Zorvane/Platform/CoreMedia/CMSampleBuffer.hpp"
#include "Zorvane/Platform/FFmpeg/MovieFile.hpp"
#include "Zorvane/Platform/FFmpeg/PicturePreparer.hpp"
#include "Zorvane/Platform/FFmpeg/VideoEncoder.hpp"
#include "Zorvane/Platform/FFmpeg/VideoTimeline.hpp"

namespace zorvane {

/// Places, converts and encodes pictures, and decides where key frames are. Used by one thread at a time; errors are
/// `NSError`s. Allocates nothing per picture on its own account.
class VideoTrack {
  public:
    VideoTrack(const AVVideoSettings& settings, const std::string& encoderName);

    VideoTimeline& timeline() { return timeline_; }
    const VideoTimeline& timeline() const { return timeline_; }
    FFmpegHandle<AVCodecParameters> codecParameters() const { return encoder_.codecParameters(); }

    /// Precondition: the time line has its start. A sample without a picture, or outside the session, is left out.
    void append(const CMSampleBuffer& sample, MovieFile& movie);

    /// Hands over what the encoder still holds.
    void drain(MovieFile& movie);

  private:
    VideoEncoder::PictureKind kindOf(const VideoTimeline::Place& place);
    void moveTo(MovieFile& movie, bool replacesLast);

    VideoTimeline timeline_;
    VideoEncoder encoder_;
    PicturePreparer preparer_;
    FFmpegHandle<AVPacket> packet_;
    const std::int64_t keyFrameTicks_;
    std::int64_t nextKeyFrame_ = 0;
};

}  // namespace zorvane
