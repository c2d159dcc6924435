#include "Zorvane/Platform/FFmpeg/FFmpegAssetWriter.hpp"

#include <utility>

#include "Zorvane/Platform/AVFoundation/AVError.hpp"
#include "Zorvane/Platform/FFmpeg/WriterThread.hpp"
#include "Zorvane/Platform/Foundation/NSError.hpp"

namespace zorvane {
namespace {

/// The longest side that both codecs have levels for.
constexpr std::int32_t longestSide = 16384;

bool isSide(std::int32_t length) {
    return length > 0 && length <= longestSide;
}

}  // namespace

FFmpegAssetWriter::FFmpegAssetWriter(std::filesystem::path outputURL, AVFileType fileType, FFmpegWriterParts parts)
    : AVAssetWriter(std::move(outputURL)),
      fileType_(fileType),
      parts_(std::move(parts)),
      queue_(std::make_shared<WriterQueue>()) {}

FFmpegAssetWriter::~FFmpegAssetWriter() = default;

bool FFmpegAssetWriter::canAddInput(const AVAssetWriterInput& input) const {
    if (video_ || input.mediaType() != AVMediaType::video || fileType_ == AVFileType::appleM4A) {
        return false;
    }
    return isSide(input.videoSettings().width) && isSide(input.videoSettings().height);
}

std::shared_ptr<AVAssetWriterInputSink> FFmpegAssetWriter::addInput(const AVAssetWriterInput& input) {
    video_ = input.videoSettings();
    return queue_;
}

void FFmpegAssetWriter::doStartWriting() {
    if (!video_) {
        throw NSError(AVFoundationErrorDomain, AVErrorNoDataCaptured,
                      {"The writer has no input, so there is nothing to write.", nullptr, {}});
    }
    WriterThread::Media media;
    media.track = std::make_unique<VideoTrack>(*video_, encoderFor(*video_));
    const auto parameters = media.track->codecParameters();
    media.movie = std::make_unique<MovieFile>(parts_.makeFile(outputURL()), fileType_, *parameters);
    thread_ = std::make_unique<WriterThread>(queue_, parts_.clock, std::move(media),
                                             [this](std::exception_ptr error) { fail(std::move(error)); });
    queue_->open();
}

void FFmpegAssetWriter::doStartSession(CMTime time) {
    queue_->startSession(time);
}

void FFmpegAssetWriter::doEndSession(CMTime time) {
    queue_->endSession(time);
}

void FFmpegAssetWriter::doFinishWriting(std::function<void(std::exception_ptr)> done) {
    if (!thread_) {
        done(error());
        return;
    }
    thread_->finish(std::move(done));
}

const std::string& FFmpegAssetWriter::encoderFor(const AVVideoSettings& settings) const {
    return settings.codec == CMVideoCodecType::hevc ? parts_.hevcEncoder : parts_.h264Encoder;
}

}  // namespace zorvane
