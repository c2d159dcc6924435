// What to tell the user about a source that can't be recorded, by its name and its state.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace zorvane {

/// What is wrong with a source.
struct SourceTrouble {
    /// The public type, as logs name it: "ZVCamera".
    std::string_view typeName;
    /// A name that holds this word, in whatever case, needs no noun.
    std::string_view word;
    std::string_view noun;
    /// What is logged.
    std::string_view logLine;
    /// What the debug description ends with.
    std::string_view debugEnding;

    /// What is said of a source that should be there: verb, noun unless the name makes it needless, name, ending.
    struct Complaint {
        std::string_view verb;
        std::string_view noun;
        std::string_view ending;
        std::string_view endingWithNoun;
    };
    Complaint complaint;
};

inline constexpr std::string_view cantRecord = "Can't record";

constexpr SourceTrouble microphoneTrouble(std::string_view verb, std::string_view line, std::string_view debugEnding) {
    constexpr std::string_view ending = ", make sure it's unmuted and powered on.";
    return {"ZVMicrophone", "microphone", "microphone", line, debugEnding, {verb, "microphone", ending, ending}};
}

constexpr SourceTrouble cameraTrouble(std::string_view verb, std::string_view line, std::string_view debugEnding) {
    constexpr std::string_view ending = ", make sure it's powered on and any privacy shutter is open.";
    return {"ZVCamera", "camera", "camera", line, debugEnding, {verb, "camera", ending, ending}};
}

constexpr SourceTrouble appleDeviceTrouble(std::string_view verb, std::string_view noun, std::string_view line,
                                           std::string_view debugEnding) {
    return {"ZVAppleDevice", "iphone",
            "device",        line,
            debugEnding,     {verb, noun, ", make sure device is unlocked.", ", make device is unlocked."}};
}

inline constexpr std::string_view noDevice = ", no AVCaptureDevice";
inline constexpr std::string_view noSamples = ", provides not sample buffers";

inline constexpr SourceTrouble microphoneWithoutDevice =
    microphoneTrouble(cantRecord, "Found in MicrophoneDiscovery as ZVMicrophone.", noDevice);
inline constexpr SourceTrouble microphoneWithoutSamples =
    microphoneTrouble("No audio from", "No samples received from microphone, timed out.", noSamples);
inline constexpr SourceTrouble cameraWithoutDevice =
    cameraTrouble(cantRecord, "Found in CameraDiscovery as ZVCamera.", noDevice);
inline constexpr SourceTrouble cameraWithoutSamples =
    cameraTrouble("No video from", "No samples received from camera, timed out.", noSamples);
inline constexpr SourceTrouble appleDeviceWithoutDevice =
    appleDeviceTrouble(cantRecord, "device", "Found in AppleDeviceDiscovery as ZVAppleDevice.", noDevice);
inline constexpr SourceTrouble appleDeviceWithoutSamples =
    appleDeviceTrouble("No video from", "camera", "No samples received from Apple device, timed out.", noSamples);

/// A display that the capture service doesn't list. `ending` is part of the complaint and must outlive the result.
constexpr SourceTrouble displayNotFound(std::string_view ending) {
    return {"ZVDisplay", "display",
            "display",   "Can't find display for given ID. But there's a ZVDisplay.",
            "",          {cantRecord, "display", ending, ending}};
}

/// A window that the capture service doesn't list; `windowMessage` has its texts.
inline constexpr SourceTrouble windowNotFound = {
    "ZVWindow", "", "", "Can't find display for given ID. But there's a ZVWindow.", "", {}};

/// The text for the user. `availability` is the name of the case.
std::string userMessage(const SourceTrouble& trouble, std::string_view name, std::string_view availability);

/// The text for developers.
std::string debugDescription(const SourceTrouble& trouble, std::string_view id, std::string_view availability);

/// The text for the user about a window that the capture service doesn't list.
std::string windowMessage(std::uint32_t windowID, const std::optional<std::string>& title,
                          const std::optional<std::string>& applicationName, std::string_view availability);

}  // namespace zorvane
