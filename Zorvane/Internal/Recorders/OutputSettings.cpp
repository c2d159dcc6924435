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

AVAudioSettings audioSettings(const AVOutputSettingsAssistant& assistant, const Logger& logger) {
    const auto settings = assistant.audioSettings();
    if (!settings) {
        fail("AVOutputSettingsAssistant didn't provide any audioSettings.", logger);
    }
    return *settings;
}

}  // namespace

OutputSettings resolveOutputSettings(AVOutputSettingsPreset preset, const CMFormatDescription& sourceVideoFormat,
                                     const Logger& logger) {
    const auto assistant = makeAssistant(preset, logger);
    assistant->setSourceVideoFormat(sourceVideoFormat);
    const AVAudioSettings audio = audioSettings(*assistant, logger);
    const auto video = assistant->videoSettings();
    if (!video) {
        fail("AVOutputSettingsAssistant didn't provide any videoSettings.", logger);
    }
    return {audio, *video};
}

AVAudioSettings resolveAudioSettings(const CMFormatDescription& sourceAudioFormat, const Logger& logger) {
    const auto assistant = makeAssistant(AVOutputSettingsPreset::h264_1920x1080, logger);
    assistant->setSourceAudioFormat(sourceAudioFormat);
    AVAudioSettings settings = audioSettings(*assistant, logger);
    if (!settings.numberOfChannels) {
        logger.warning("Missing AVNumberOfChannelsKey from AVOutputSettingsAssistant settings, assuming mono.");
        settings.numberOfChannels = 1;
    } else if (*settings.numberOfChannels > maxAudioChannels) {
        logger.warning("More than 2 audio channels is not supported, limitting output settings to 2 channels.");
        settings.numberOfChannels = maxAudioChannels;
    }
    return settings;
}

}  // namespace zorvane
