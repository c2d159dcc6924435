// The internal form of the schema items: what each kind of source is recorded with.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "Zorvane/Internal/Logger.hpp"
#include "Zorvane/Internal/Recorder.hpp"
#include "Zorvane/ZVSchemaItem.hpp"

namespace zorvane {

// `id` is a short random identifier that the factory made.

/// Recorders of the caller's own.
struct CustomSchemaItem {
    using MakeRecorders =
        std::function<Recorders(const std::filesystem::path& bundleURL, const Logger& logger, AbortHandler onAbort)>;

    MakeRecorders makeRecorders;
};

struct WebcamSchemaItem {
    std::string id;
    std::string microphoneID;
    std::string cameraID;
    ZVWebcamOutputOptions outputOptions;
};

struct MicrophoneFileSchemaItem {
    std::string id;
    std::string microphoneID;
    ZVAudioOutputOptions outputOptions;
};

struct MicrophoneStreamSchemaItem {
    std::string id;
    ZVSchemaItem::SampleCallback callback;
    std::string microphoneID;
};

struct SystemAudioSchemaItem {
    std::string id;
    /// Process ids. Either list may be absent.
    std::optional<std::vector<std::int32_t>> includedApplicationIDs;
    std::optional<std::vector<std::int32_t>> excludedApplicationIDs;
    bool excludeCurrentProcess = false;
    ZVAudioOutputOptions outputOptions;
};

struct DisplaySchemaItem {
    std::string id;
    /// The display's serial number, by which it is known across reconnections.
    std::uint32_t displayID = 0;
    std::set<ZVScreenRecordingExcludeOptions> excludingOptions;
    ZVColorSpace colorSpace = ZVColorSpace::sRGB;
    bool captureAudio = false;
    bool showsCursor = false;
    bool mouseEvents = false;
    bool keyboardEvents = false;
    bool topWindowInfo = false;
    ZVScreenRecordingOutputOptions outputOptions;
};

struct WindowBasedCropSchemaItem {
    std::string id;
    std::uint32_t windowID = 0;
    ZVColorSpace colorSpace = ZVColorSpace::sRGB;
    bool captureAudio = false;
    bool showsCursor = false;
    bool mouseEvents = false;
    bool keyboardEvents = false;
    ZVScreenRecordingOutputOptions outputOptions;
};

struct AppleDeviceStaticOrientationItem {
    std::string id;
    std::string deviceID;
    ZVDeviceOutputOptions outputOptions;
};

/// One of the above.
class InteralSchemaItem {
  public:
    using Payload = std::variant<CustomSchemaItem, WebcamSchemaItem, MicrophoneFileSchemaItem,
                                 MicrophoneStreamSchemaItem, SystemAudioSchemaItem, DisplaySchemaItem,
                                 WindowBasedCropSchemaItem, AppleDeviceStaticOrientationItem>;

    explicit InteralSchemaItem(Payload payload) : payload_(std::move(payload)) {}

    const Payload& payload() const { return payload_; }

  private:
    Payload payload_;
};

/// What the media file of an item is called if the host gave no name, such as "display-5.mov". The mixed sound of the
/// system gets a new random name with every call.
std::string fallbackFilename(const WebcamSchemaItem& item);
std::string fallbackFilename(const MicrophoneFileSchemaItem& item);
std::string fallbackFilename(const SystemAudioSchemaItem& item);
std::string fallbackFilename(const DisplaySchemaItem& item);
std::string fallbackFilename(const WindowBasedCropSchemaItem& item);
std::string fallbackFilename(const AppleDeviceStaticOrientationItem& item);

/// One line for logs: the kind of item and what names its source.
std::string debugDescription(const InteralSchemaItem& item);

}  // namespace zorvane
