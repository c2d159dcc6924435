#include "Zorvane/Platform/FFmpeg/OutputSettingsPresets.hpp"

#include <algorithm>

namespace zorvane {
namespace {

CMVideoDimensions presetDimensions(AVOutputSettingsPreset preset) {
    return preset == AVOutputSettingsPreset::hevc_7680x4320 ? CMVideoDimensions{7680, 4320}
                                                            : CMVideoDimensions{3840, 2160};
}

/// The highest quantiser at which small text and thin coloured lines can't be told from the screen, looking closely.
constexpr double sharpQuality = 22;

AVVideoSettings h264Settings() {
    AVVideoSettings settings;
    settings.codec = CMVideoCodecType::h264;
    settings.compressionProperties.constantQuality = sharpQuality;
    settings.compressionProperties.maxKeyFrameIntervalDuration = 5;
    return settings;
}

AVVideoSettings hevcSettings() {
    AVVideoSettings settings;
    settings.codec = CMVideoCodecType::hevc;
    settings.colorProperties.primaries = AVVideoColorPrimaries::p3D65;
    settings.compressionProperties.constantQuality = sharpQuality;
    // A key frame takes this encoder ten times as long as another frame.
    settings.compressionProperties.maxKeyFrameIntervalDuration = 10;
    return settings;
}

}  // namespace

void PresetSettingsAssistant::setSourceVideoFormat(const CMFormatDescription& format) {
    source_ = format.dimensions;
}

std::optional<AVAudioSettings> PresetSettingsAssistant::audioSettings() const {
    AVAudioSettings settings;
    settings.numberOfChannels = 2;
    return settings;
}

std::optional<AVVideoSettings> PresetSettingsAssistant::videoSettings() const {
    AVVideoSettings settings = preset_ == AVOutputSettingsPreset::hevc_7680x4320 ? hevcSettings() : h264Settings();
    const CMVideoDimensions largest = presetDimensions(preset_);
    const CMVideoDimensions size = source_.value_or(largest);
    settings.width = std::min(size.width, largest.width);
    settings.height = std::min(size.height, largest.height);
    return settings;
}

}  // namespace zorvane
