// How recorders come by their encoder settings.
#pragma once

#include <optional>

#include "Zorvane/Internal/Logger.hpp"
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

/// The settings for sound of this format alone, with one or two channels. Logs and throws as above.
AVAudioSettings resolveAudioSettings(const CMFormatDescription& sourceAudioFormat, const Logger& logger);

/// What is known of a camera or phone.
struct CameraFormat {
    CMFormatDescription video;
    CMTime minFrameDuration;                   ///< not numeric where it isn't known
    std::optional<CMFormatDescription> audio;  ///< of the sound that goes with the pictures, as far as it is known
};

/// The settings for pictures as cameras give them, in their own colours, with sound in one or two channels. Logs and
/// throws as above.
OutputSettings resolveCameraSettings(const CameraFormat& source, const Logger& logger);

}  // namespace zorvane
