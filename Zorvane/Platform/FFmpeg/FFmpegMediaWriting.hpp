// Media writing over the FFmpeg libraries.
#pragma once

#include "Zorvane/Platform/AVFoundation/AVMediaWriting.hpp"
#include "Zorvane/Platform/FFmpeg/FFmpegAssetWriter.hpp"

namespace zorvane {

/// Makes writers of single movie files, with pictures, sound or both.
class FFmpegMediaWriting final : public AVMediaWriting {
  public:
    /// Parts that are left empty are those of the machine: its file system, the current platform's clock.
    explicit FFmpegMediaWriting(FFmpegWriterParts parts = {});

    std::unique_ptr<AVOutputSettingsAssistant> makeOutputSettingsAssistant(AVOutputSettingsPreset preset) override;
    std::shared_ptr<AVAssetWriter> makeAssetWriter(const std::filesystem::path& url, AVFileType fileType) override;
    std::shared_ptr<AVAssetWriter> makeSegmentWriter(AVAssetSegmenting segmenting) override;

  private:
    FFmpegWriterParts partsOfNow() const;

    const FFmpegWriterParts parts_;
};

}  // namespace zorvane
