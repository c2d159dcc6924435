#include "Zorvane/Platform/FFmpeg/OutputSettingsPresets.hpp"

#include <algorithm>
#include <cmath>

#include "Zorvane/Platform/FFmpeg/EncoderOptions.hpp"
#include "Zorvane/Platform/FFmpeg/PictureFit.hpp"

namespace zorvane {
namespace {

CMVideoDimensions presetDimensions(AVOutputSettingsPreset preset) {
    switch (preset) {
        case AVOutputSettingsPreset::h264_1920x1080:
            return {1920, 1080};
        case AVOutputSettingsPreset::h264_3840x2160:
            return {3840, 2160};
        case AVOutputSettingsPreset::hevc_7680x4320:
            return {7680, 4320};
    }
    return {};
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
    settings.colorProperties->primaries = AVVideoColorPrimaries::p3D65;
    settings.compressionProperties.constantQuality = sharpQuality;
    // A key frame takes this encoder ten times as long as another frame.
    settings.compressionProperties.maxKeyFrameIntervalDuration = 10;
    return settings;
}

CMVideoDimensions limitedTo(CMVideoDimensions limit, CMVideoDimensions size) {
    const bool fits = size.width <= limit.width && size.height <= limit.height;
    return fits ? size : largestSizeInside(limit, size);
}

double frameRate(CMTime minFrameDuration) {
    constexpr double usual = 30;
    constexpr double highest = 120;
    const bool isKnown = minFrameDuration.isNumeric() && minFrameDuration.seconds() > 0;
    return isKnown ? std::min(1 / minFrameDuration.seconds(), highest) : usual;
}

/// The noise of a camera is new in each picture. Kept whole it takes more bits than all else, so the quality is one at
/// which little of it is left, and the bits are bounded for when there is little light.
AVVideoCompressionProperties forCamera(AVVideoCompressionProperties properties, CMVideoDimensions size, double rate) {
    constexpr double cameraQuality = 23;
    constexpr double mostBitsPerPixel = 0.2;
    properties.effort = AVVideoEncodingEffort::balanced;
    properties.constantQuality = cameraQuality;
    properties.maxBitRate = std::llround(mostBitsPerPixel * size.width * size.height * rate);
    properties.expectedSourceFrameRate = rate;
    return properties;
}

/// At full bandwidth, for each channel.
constexpr std::int32_t channelBitRate = 80'000;

/// Lower rates have fewer frequencies to describe.
std::int32_t bitRate(double sampleRate, std::int32_t channels) {
    const double bandwidth = std::min(sampleRate / 44100, 1.0);
    return static_cast<std::int32_t>(std::lround(channelBitRate * channels * bandwidth));
}

}  // namespace

void PresetSettingsAssistant::setSourceVideoFormat(const CMFormatDescription& format) {
    sourceVideo_ = format;
}

void PresetSettingsAssistant::setSourceAudioFormat(const CMFormatDescription& format) {
    sourceSound_ = format.audioFormat;
}

std::optional<AVAudioSettings> PresetSettingsAssistant::audioSettings() const {
    const AVAudioFormat source = sourceSound_.value_or(AVAudioFormat{});
    AVAudioSettings settings;
    settings.sampleRate = nearestAudioRate(source.sampleRate);
    settings.numberOfChannels = static_cast<std::int32_t>(std::clamp(source.channelCount, 1U, 8U));
    settings.bitRate = bitRate(settings.sampleRate, *settings.numberOfChannels);
    return settings;
}

std::optional<AVVideoSettings> PresetSettingsAssistant::videoSettings() const {
    AVVideoSettings settings = preset_ == AVOutputSettingsPreset::hevc_7680x4320 ? hevcSettings() : h264Settings();
    const CMVideoDimensions largest = presetDimensions(preset_);
    const CMVideoDimensions size = sourceVideo_ ? limitedTo(largest, sourceVideo_->dimensions) : largest;
    settings.width = size.width;
    settings.height = size.height;
    if (sourceVideo_ && !sourceVideo_->codec) {
        settings.compressionProperties = forCamera(settings.compressionProperties, size, frameRate(minFrameDuration_));
    }
    return settings;
}

}  // namespace zorvane
