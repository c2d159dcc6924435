// What a media recorder writes through, whether its output is one file or a stream of segments.
#pragma once

#include <filesystem>
#include <memory>
#include <vector>

#include "Zorvane/Internal/Concurrency/Task.hpp"
#include "Zorvane/Internal/OutputDescription.hpp"
#include "Zorvane/Platform/AVFoundation/AVAssetWriter.hpp"

namespace zorvane {

/// The writers of one recorder. Made in the recorder's construction; `startWriting` before the first sample, sessions
/// by the recorder, `finishWriting` once.
class OutputAssetWriters {
  public:
    virtual ~OutputAssetWriters() = default;

    /// The writer of each kind of media; both are the same object where one file holds both.
    virtual AVAssetWriter& audioAssetWriter() const = 0;
    virtual AVAssetWriter& videoAssetWriter() const = 0;

    /// Whether video times are to begin at 0 instead of at host time.
    virtual bool expectsZeroBasedVideoPTS() const = 0;

    /// Throws a writer's error when it can't start.
    virtual void startWriting() = 0;

    /// Finalises the files and gives the locations of those to be listed. Throws what spoilt one.
    virtual Task<std::vector<std::filesystem::path>> finishWriting() = 0;
};

/// One movie file that holds all media.
class SingleFileOutputAssetWriters final : public OutputAssetWriters {
  public:
    /// The extension "mp4" gives an MPEG-4 file, every other, "m4a" as well, a QuickTime movie. Throws what the
    /// platform throws.
    explicit SingleFileOutputAssetWriters(const std::filesystem::path& url);

    AVAssetWriter& audioAssetWriter() const override { return *sharedAssetWriter_; }
    AVAssetWriter& videoAssetWriter() const override { return *sharedAssetWriter_; }
    bool expectsZeroBasedVideoPTS() const override { return false; }
    void startWriting() override;
    Task<std::vector<std::filesystem::path>> finishWriting() override;

  private:
    const std::shared_ptr<AVAssetWriter> sharedAssetWriter_;
};

/// Starts one writer; throws its error, or a `ZVError` (internal error) when it gives none.
void startWriting(AVAssetWriter& writer);

}  // namespace zorvane
