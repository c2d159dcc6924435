// The entry to writing media: presets and writers.
#pragma once

#include <filesystem>
#include <memory>

#include "Zorvane/Platform/AVFoundation/AVAssetSegment.hpp"
#include "Zorvane/Platform/AVFoundation/AVAssetWriter.hpp"
#include "Zorvane/Platform/AVFoundation/AVOutputSettings.hpp"

namespace zorvane {

/// One per platform. Any thread may call.
class AVMediaWriting {
  public:
    virtual ~AVMediaWriting() = default;

    /// Null when this platform knows no such preset.
    virtual std::unique_ptr<AVOutputSettingsAssistant> makeOutputSettingsAssistant(AVOutputSettingsPreset preset) = 0;

    /// A writer of a new file at `url`. Throws `NSError` when such a file can't be written.
    virtual std::shared_ptr<AVAssetWriter> makeAssetWriter(const std::filesystem::path& url, AVFileType fileType) = 0;

    /// A writer of fragmented MPEG-4 segments of one track, which it hands to the delegate; it has no file and its
    /// `outputURL` is empty.
    virtual std::shared_ptr<AVAssetWriter> makeSegmentWriter(AVAssetSegmenting segmenting) = 0;
};

}  // namespace zorvane
