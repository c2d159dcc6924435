#include "Zorvane/ZVSchemaItem.hpp"

#include <fmt/format.h>

#include <utility>

#include "Zorvane/Internal/SchemaItem.hpp"
#include "Zorvane/Internal/ShortID.hpp"

namespace zorvane {
namespace {

template <class Payload>
ZVSchemaItem makeItem(Payload payload) {
    return ZVSchemaItem(InteralSchemaItem(std::move(payload)));
}

ZVSchemaItem includedAudio(std::vector<std::int32_t> applicationIDs, ZVAudioOutputOptions output) {
    return makeItem(SystemAudioSchemaItem{.id = ShortID::make(),
                                          .includedApplicationIDs = std::move(applicationIDs),
                                          .excludedApplicationIDs = std::nullopt,
                                          .excludeCurrentProcess = false,
                                          .outputOptions = std::move(output)});
}

}  // namespace

ZVSchemaItem::ZVSchemaItem(InteralSchemaItem internalItem)
    : internalItem_(std::make_shared<const InteralSchemaItem>(std::move(internalItem))) {}

ZVSchemaItem ZVSchemaItem::webcam(std::string microphoneID, std::string cameraID, Filename filename) {
    return webcam(std::move(microphoneID), std::move(cameraID), ZVWebcamOutputOptions::singleFile(std::move(filename)));
}

ZVSchemaItem ZVSchemaItem::webcam(std::string microphoneID, std::string cameraID, ZVWebcamOutputOptions output) {
    return makeItem(WebcamSchemaItem{ShortID::make(), std::move(microphoneID), std::move(cameraID), std::move(output)});
}

ZVSchemaItem ZVSchemaItem::microphone(std::string microphoneID, Filename filename) {
    return microphone(std::move(microphoneID), ZVAudioOutputOptions::singleFile(std::move(filename)));
}

ZVSchemaItem ZVSchemaItem::microphone(std::string microphoneID, ZVAudioOutputOptions output) {
    return makeItem(MicrophoneFileSchemaItem{ShortID::make(), std::move(microphoneID), std::move(output)});
}

ZVSchemaItem ZVSchemaItem::_microphone(std::string microphoneID, SampleCallback callback) {
    return makeItem(MicrophoneStreamSchemaItem{ShortID::make(), std::move(callback), std::move(microphoneID)});
}

ZVSchemaItem ZVSchemaItem::systemAudio(std::set<ZVSystemAudioExcludeOptions> excluding, Filename filename) {
    return systemAudio(std::move(excluding), ZVAudioOutputOptions::singleFile(std::move(filename)));
}

ZVSchemaItem ZVSchemaItem::systemAudio(std::set<ZVSystemAudioExcludeOptions> excluding, ZVAudioOutputOptions output) {
    std::vector<std::int32_t> excludedApplicationIDs;
    for (const auto& option : excluding) {
        if (option.processID()) {
            excludedApplicationIDs.push_back(*option.processID());
        }
    }
    return makeItem(SystemAudioSchemaItem{
        .id = ShortID::make(),
        .includedApplicationIDs = std::nullopt,
        .excludedApplicationIDs = std::move(excludedApplicationIDs),
        .excludeCurrentProcess = excluding.contains(ZVSystemAudioExcludeOptions::currentProcess()),
        .outputOptions = std::move(output)});
}

ZVSchemaItem ZVSchemaItem::systemAudio(std::vector<std::int32_t> includedApplicationIDs, Filename filename) {
    return systemAudio(std::move(includedApplicationIDs), ZVAudioOutputOptions::singleFile(std::move(filename)));
}

ZVSchemaItem ZVSchemaItem::systemAudio(std::vector<std::int32_t> includedApplicationIDs, ZVAudioOutputOptions output) {
    return includedAudio(std::move(includedApplicationIDs), std::move(output));
}

ZVSchemaItem ZVSchemaItem::applicationAudio(std::int32_t applicationID, Filename filename) {
    return applicationAudio(applicationID, ZVAudioOutputOptions::singleFile(std::move(filename)));
}

ZVSchemaItem ZVSchemaItem::applicationAudio(std::int32_t applicationID, ZVAudioOutputOptions output) {
    return includedAudio({applicationID}, std::move(output));
}

ZVSchemaItem ZVSchemaItem::display(std::uint32_t displayID, ZVDisplayOptions options, Filename filename) {
    return display(displayID, std::move(options), ZVScreenRecordingOutputOptions::singleFile(std::move(filename)));
}

ZVSchemaItem ZVSchemaItem::display(std::uint32_t displayID, ZVDisplayOptions options,
                                   ZVScreenRecordingOutputOptions output) {
    return _display(displayID, std::move(options), false, std::move(output));
}

ZVSchemaItem ZVSchemaItem::_display(std::uint32_t displayID, ZVDisplayOptions options, bool topWindowInfo,
                                    ZVScreenRecordingOutputOptions output) {
    return makeItem(DisplaySchemaItem{.id = ShortID::make(),
                                      .displayID = displayID,
                                      .excludingOptions = std::move(options.excluding),
                                      .colorSpace = options.colorSpace,
                                      .captureAudio = options.includeAudio,
                                      .showsCursor = options.showsCursor,
                                      .mouseEvents = options.mouseEvents,
                                      .keyboardEvents = options.keyboardEvents,
                                      .topWindowInfo = topWindowInfo,
                                      .outputOptions = std::move(output)});
}

ZVSchemaItem ZVSchemaItem::windowBasedCrop(std::uint32_t windowID, ZVWindowBasedCropOptions options,
                                           Filename filename) {
    return windowBasedCrop(windowID, options, ZVScreenRecordingOutputOptions::singleFile(std::move(filename)));
}

ZVSchemaItem ZVSchemaItem::windowBasedCrop(std::uint32_t windowID, ZVWindowBasedCropOptions options,
                                           ZVScreenRecordingOutputOptions output) {
    return makeItem(WindowBasedCropSchemaItem{.id = ShortID::make(),
                                              .windowID = windowID,
                                              .colorSpace = options.colorSpace,
                                              .captureAudio = false,
                                              .showsCursor = options.showsCursor,
                                              .mouseEvents = options.mouseEvents,
                                              .keyboardEvents = options.keyboardEvents,
                                              .outputOptions = std::move(output)});
}

ZVSchemaItem ZVSchemaItem::appleDeviceStaticOrientation(std::string deviceID, Filename filename) {
    return appleDeviceStaticOrientation(std::move(deviceID), ZVDeviceOutputOptions::singleFile(std::move(filename)));
}

ZVSchemaItem ZVSchemaItem::appleDeviceStaticOrientation(std::string deviceID, ZVDeviceOutputOptions output) {
    return makeItem(AppleDeviceStaticOrientationItem{ShortID::make(), std::move(deviceID), std::move(output)});
}

std::string ZVSchemaItem::debugDescription() const {
    return zorvane::debugDescription(*internalItem_);
}

std::string ZVSchema::debugDescription() const {
    std::vector<std::string> descriptions;
    for (const ZVSchemaItem& item : items) {
        descriptions.push_back(item.debugDescription());
    }
    return fmt::format("outputDirectory: {}, items: [{}]", outputDirectory ? outputDirectory->string() : "none",
                       fmt::join(descriptions, ", "));
}

}  // namespace zorvane
