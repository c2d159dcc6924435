// How recorders come by their encoder settings and writer inputs.
#pragma once

#include <memory>

#include "Zorvane/Internal/Logger.hpp"
#include "Zorvane/Platform/AVFoundation/AVAssetWriter.hpp"
#include "Zorvane/Platform/AVFoundation/AVOutputSettings.hpp"

namespace zorvane {

struct OutputSettings {
    AVAudioSettings audio;
    AVVideoSettings video;
};

/// The preset's settings for a source of this format. Logs and throws a `ZVError` (internal error) when the platform
/// has no such preset, or the preset lacks one of the two media.
OutputSettings resolveOutputSettings(AVOutputSettingsPreset preset, const CMFormatDescription& sourceVideoFormat,
                                     const Logger& logger);

/// Adds an input for media that comes as it happens. Logs and throws a `ZVError` (internal error) when refused.
std::shared_ptr<AVAssetWriterInput> addRealTimeInput(AVAssetWriter& writer, const AVVideoSettings& settings,
                                                     const Logger& logger);
std::shared_ptr<AVAssetWriterInput> addRealTimeInput(AVAssetWriter& writer, const AVAudioSettings& settings,
                                                     const Logger& logger);

}  // namespace zorvane
