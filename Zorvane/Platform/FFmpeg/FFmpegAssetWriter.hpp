// An asset writer over the FFmpeg libraries.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

#include "Zorvane/Platform/AVFoundation/AVAssetSegment.hpp"
#include "Zorvane/Platform/AVFoundation/AVAssetWriter.hpp"
#include "Zorvane/Platform/FFmpeg/WriterQueue.hpp"
#include "Zorvane/Platform/Foundation/HostClock.hpp"
#include "Zorvane/Platform/Foundation/OutputFile.hpp"

namespace zorvane {

class MediaFile;
class MediaTrack;
struct MediaTrackFormat;
class WriterThread;

/// What a writer works with.
struct FFmpegWriterParts {
    std::string h264Encoder = "libx264";  ///< names of encoders of the FFmpeg libraries, looked up when writing starts
    std::string hevcEncoder = "libx265";
    OutputFileMaker makeFile;
    std::shared_ptr<HostClock> clock;
};

/// Writes one track of pictures, one of sound, or both, on a thread of its own. `canAdd` says whether a track fits into
/// the file; an encoder that isn't installed is an error of `startWriting`, since that can say what to install.
///
/// A process that ends in the middle leaves a movie that lacks its last second at most. Destroying a writer that wasn't
/// finished does the same, at once. A writer may be destroyed on any thread, also by one of its own callbacks.
///
/// A writer of segments writes one track, and no file: see `SegmentFile`.
class FFmpegAssetWriter final : public AVAssetWriter {
  public:
    FFmpegAssetWriter(std::filesystem::path outputURL, AVFileType fileType, FFmpegWriterParts parts);
    FFmpegAssetWriter(AVAssetSegmenting segmenting, FFmpegWriterParts parts);
    ~FFmpegAssetWriter() override;

  private:
    bool canAddInput(const AVAssetWriterInput& input) const override;
    std::shared_ptr<AVAssetWriterInputSink> addInput(const AVAssetWriterInput& input) override;
    void doStartWriting() override;
    void doStartSession(CMTime time) override;
    void doEndSession(CMTime time) override;
    void doFinishWriting(std::function<void(std::exception_ptr)> done) override;

    using TrackSettings = std::variant<AVVideoSettings, AVAudioSettings>;

    FFmpegAssetWriter(std::filesystem::path outputURL, AVFileType fileType, std::optional<AVAssetSegmenting> segmenting,
                      FFmpegWriterParts parts);
    bool hasTrack(AVMediaType mediaType) const;
    std::unique_ptr<MediaFile> makeFile(std::span<const MediaTrackFormat> formats);
    std::unique_ptr<MediaTrack> makeTrack(const TrackSettings& settings) const;
    const std::string& encoderFor(const AVVideoSettings& settings) const;

    const AVFileType fileType_;
    const std::optional<AVAssetSegmenting> segmenting_;
    const FFmpegWriterParts parts_;
    const std::shared_ptr<WriterQueue> queue_;
    std::vector<TrackSettings> tracks_;     // in the order of the queue's inputs
    std::unique_ptr<WriterThread> thread_;  // from a successful start on
};

}  // namespace zorvane
