#include "Zorvane/Internal/Recorders/OutputSettings.hpp"

#include <memory>
#include <string_view>

#include "Zorvane/Platform/AVFoundation/AVMediaWriting.hpp"
#include "Zorvane/Platform/Platform.hpp"
#include "Zorvane/ZVError.hpp"

namespace zorvane {
namespace {

constexpr std::int32_t maxAudioChannels = 2;

[[noreturn]] void fail(std::string_view message, const Logger& logger) {
    logger.error(message);
    throw ZVError::internalError(message);
}

std::unique_ptr<AVOutputSettingsAssistant> makeAssistant(AVOutputSettingsPreset preset, const Logger& logger) {
    auto assistant = Platform::current()->mediaWriting->makeOutputSettingsAssistant(preset);
    if (!assistant) {
        fail("Failed to initialize AVOutputSettingsAssistant.", logger);
    }
    return assistant;
}

AVAudioSettings audioSettingsOf(const AVOutputSettingsAssistant& assistant, const Logger& logger) {
    const auto settings = assistant.audioSettings();
    if (!settings) {
        fail("AVOutputSettingsAssistant didn't provide any audioSettings.", logger);
    }
    return *settings;
}

OutputSettings settingsOf(const AVOutputSettingsAssistant& assistant, const Logger& logger) {
    const AVAudioSettings audio = audioSettingsOf(assistant, logger);
    const auto video = assistant.videoSettings();
    if (!video) {
        fail("AVOutputSettingsAssistant didn't provide any videoSettings.", logger);
    }
    return {audio, *video};
}

/// Settings that don't tell their channels stay as they are: they count as mono.
void limitChannels(AVAudioSettings& settings, const Logger& logger) {
    if (!settings.numberOfChannels) {
        logger.warning("Missing AVNumberOfChannelsKey from AVOutputSettingsAssistant settings, assuming mono.");
    } else if (*settings.numberOfChannels > maxAudioChannels) {
        logger.warning("More than 2 audio channels is not supported, limitting output settings to 2 channels.");
        settings.numberOfChannels = maxAudioChannels;
    }
}

}  // namespace

OutputSettings resolveOutputSettings(AVOutputSettingsPreset preset, const CMFormatDescription& sourceVideoFormat,
                                     const Logger& logger) {
    const auto assistant = makeAssistant(preset, logger);
    assistant->setSourceVideoFormat(sourceVideoFormat);
    return settingsOf(*assistant, logger);
}

AVAudioSettings resolveAudioSettings(const CMFormatDescription& sourceAudioFormat, const Logger& logger) {
    const auto assistant = makeAssistant(AVOutputSettingsPreset::h264_1920x1080, logger);
    assistant->setSourceAudioFormat(sourceAudioFormat);
    AVAudioSettings settings = audioSettingsOf(*assistant, logger);
    limitChannels(settings, logger);
    return settings;
}

OutputSettings resolveCameraSettings(const CameraFormat& source, const Logger& logger) {
    const auto assistant = makeAssistant(AVOutputSettingsPreset::h264_1920x1080, logger);
    if (source.audio) {
        assistant->setSourceAudioFormat(*source.audio);
    }
    assistant->setSourceVideoFormat(source.video);
    if (source.minFrameDuration.isNumeric()) {
        assistant->setSourceVideoMinFrameDuration(source.minFrameDuration);
    } else {
        logger.warning("Non numeric activeVideoMinFrameDuration, will not set sourceVideoMinFrameDuration.");
    }
    OutputSettings settings = settingsOf(*assistant, logger);
    limitChannels(settings.audio, logger);
    settings.video.colorProperties = std::nullopt;
    settings.video.compressionProperties.allowFrameReordering = false;
    return settings;
}

}  // namespace zorvane
