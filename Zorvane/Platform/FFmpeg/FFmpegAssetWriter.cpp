#include "Zorvane/Platform/FFmpeg/FFmpegAssetWriter.hpp"

#include <algorithm>
#include <utility>

#include "Zorvane/Platform/AVFoundation/AVError.hpp"
#include "Zorvane/Platform/FFmpeg/AudioTrack.hpp"
#include "Zorvane/Platform/FFmpeg/MovieFile.hpp"
#include "Zorvane/Platform/FFmpeg/SegmentFile.hpp"
#include "Zorvane/Platform/FFmpeg/VideoTrack.hpp"
#include "Zorvane/Platform/FFmpeg/WriterThread.hpp"
#include "Zorvane/Platform/Foundation/NSError.hpp"

namespace zorvane {
namespace {

/// The longest side that both codecs have levels for.
constexpr std::int32_t longestSide = 16384;

bool isSide(std::int32_t length) {
    return length > 0 && length <= longestSide;
}

bool canEncode(const AVVideoSettings& settings) {
    return isSide(settings.width) && isSide(settings.height);
}

bool canEncode(const AVAudioSettings& settings) {
    const std::int32_t channels = settings.numberOfChannels.value_or(1);
    return channels >= 1 && channels <= 8 && settings.sampleRate >= 1 && settings.bitRate > 0;
}

}  // namespace

FFmpegAssetWriter::FFmpegAssetWriter(std::filesystem::path outputURL, AVFileType fileType, FFmpegWriterParts parts)
    : FFmpegAssetWriter(std::move(outputURL), fileType, std::nullopt, std::move(parts)) {}

FFmpegAssetWriter::FFmpegAssetWriter(AVAssetSegmenting segmenting, FFmpegWriterParts parts)
    : FFmpegAssetWriter({}, AVFileType::mpeg4, std::move(segmenting), std::move(parts)) {}

FFmpegAssetWriter::FFmpegAssetWriter(std::filesystem::path outputURL, AVFileType fileType,
                                     std::optional<AVAssetSegmenting> segmenting, FFmpegWriterParts parts)
    : AVAssetWriter(std::move(outputURL)),
      fileType_(fileType),
      segmenting_(std::move(segmenting)),
      parts_(std::move(parts)),
      queue_(std::make_shared<WriterQueue>()) {}

FFmpegAssetWriter::~FFmpegAssetWriter() = default;

bool FFmpegAssetWriter::canAddInput(const AVAssetWriterInput& input) const {
    if (hasTrack(input.mediaType()) || (segmenting_ && !tracks_.empty())) {
        return false;
    }
    if (input.mediaType() == AVMediaType::audio) {
        return canEncode(input.audioSettings());
    }
    return fileType_ != AVFileType::appleM4A && canEncode(input.videoSettings());
}

std::shared_ptr<AVAssetWriterInputSink> FFmpegAssetWriter::addInput(const AVAssetWriterInput& input) {
    if (input.mediaType() == AVMediaType::audio) {
        tracks_.emplace_back(input.audioSettings());
    } else {
        tracks_.emplace_back(input.videoSettings());
    }
    return queue_->addInput(input.mediaType());
}

void FFmpegAssetWriter::doStartWriting() {
    if (tracks_.empty()) {
        throw NSError(AVFoundationErrorDomain, AVErrorNoDataCaptured,
                      {"The writer has no input, so there is nothing to write.", nullptr, {}});
    }
    WriterThread::Media media;
    std::vector<MediaTrackFormat> formats;
    for (const TrackSettings& settings : tracks_) {
        media.tracks.push_back(makeTrack(settings));
        formats.push_back(media.tracks.back()->format());
    }
    media.file = makeFile(formats);
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

bool FFmpegAssetWriter::hasTrack(AVMediaType mediaType) const {
    return std::ranges::any_of(tracks_, [mediaType](const TrackSettings& settings) {
        return std::holds_alternative<AVAudioSettings>(settings) == (mediaType == AVMediaType::audio);
    });
}

std::unique_ptr<MediaFile> FFmpegAssetWriter::makeFile(std::span<const MediaTrackFormat> formats) {
    if (!segmenting_) {
        return std::make_unique<MovieFile>(parts_.makeFile(outputURL()), fileType_, formats);
    }
    auto handOut = [this](std::span<const std::byte> data, AVAssetSegmentType type,
                          const std::optional<AVAssetSegmentReport>& report) {
        if (const auto delegate = segmenting_->delegate.lock()) {
            delegate->didOutputSegmentData(*this, data, type, report);
        }
    };
    return std::make_unique<SegmentFile>(formats.front(), *segmenting_, std::move(handOut));
}

std::unique_ptr<MediaTrack> FFmpegAssetWriter::makeTrack(const TrackSettings& settings) const {
    if (const auto* const audio = std::get_if<AVAudioSettings>(&settings)) {
        return std::make_unique<AudioTrack>(*audio);
    }
    const auto& video = std::get<AVVideoSettings>(settings);
    if (segmenting_) {
        return std::make_unique<VideoTrack>(video, encoderFor(video), segmenting_->preferredOutputSegmentInterval);
    }
    return std::make_unique<VideoTrack>(video, encoderFor(video));
}

const std::string& FFmpegAssetWriter::encoderFor(const AVVideoSettings& settings) const {
    return settings.codec == CMVideoCodecType::hevc ? parts_.hevcEncoder : parts_.h264Encoder;
}

}  // namespace zorvane
