#include "Zorvane/Internal/Recorders/OutputSettings.hpp"

#include <string_view>

#include "Zorvane/Platform/AVFoundation/AVMediaWriting.hpp"
#include "Zorvane/Platform/Platform.hpp"
#include "Zorvane/ZVError.hpp"

namespace zorvane {
namespace {

[[noreturn]] void fail(std::string_view message, const Logger& logger) {
    logger.error(message);
    throw ZVError::internalError(message);
}

std::shared_ptr<AVAssetWriterInput> addInput(AVAssetWriter& writer, std::shared_ptr<AVAssetWriterInput> input,
                                             std::string_view refusal, const Logger& logger) {
    input->setExpectsMediaDataInRealTime(true);
    if (!writer.canAdd(*input)) {
        fail(refusal, logger);
    }
    writer.add(input);
    return input;
}

}  // namespace

OutputSettings resolveOutputSettings(AVOutputSettingsPreset preset, const CMFormatDescription& sourceVideoFormat,
                                     const Logger& logger) {
    const auto assistant = Platform::current()->mediaWriting->makeOutputSettingsAssistant(preset);
    if (!assistant) {
        fail("Failed to initialize AVOutputSettingsAssistant.", logger);
    }
    assistant->setSourceVideoFormat(sourceVideoFormat);
    const auto audio = assistant->audioSettings();
    if (!audio) {
        fail("AVOutputSettingsAssistant didn't provide any audioSettings.", logger);
    }
    const auto video = assistant->videoSettings();
    if (!video) {
        fail("AVOutputSettingsAssistant didn't provide any videoSettings.", logger);
    }
    return {*audio, *video};
}

std::shared_ptr<AVAssetWriterInput> addRealTimeInput(AVAssetWriter& writer, const AVVideoSettings& settings,
                                                     const Logger& logger) {
    return addInput(writer, std::make_shared<AVAssetWriterInput>(settings), "Can't add video input to asset writer.",
                    logger);
}

std::shared_ptr<AVAssetWriterInput> addRealTimeInput(AVAssetWriter& writer, const AVAudioSettings& settings,
                                                     const Logger& logger) {
    return addInput(writer, std::make_shared<AVAssetWriterInput>(settings), "Can't add audio input to asset writer.",
                    logger);
}

}  // namespace zorvane
