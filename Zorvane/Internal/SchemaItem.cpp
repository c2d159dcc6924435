#include "Zorvane/Internal/SchemaItem.hpp"

#include <fmt/format.h>

#include "Zorvane/Internal/ShortID.hpp"

namespace zorvane {
namespace {

struct Description {
    std::string operator()(const CustomSchemaItem&) const { return "custom"; }
    std::string operator()(const WebcamSchemaItem& item) const {
        return fmt::format("webcam({}, {})", item.cameraID, item.microphoneID);
    }
    std::string operator()(const MicrophoneFileSchemaItem& item) const {
        return fmt::format("microphone({})", item.microphoneID);
    }
    std::string operator()(const MicrophoneStreamSchemaItem& item) const {
        return fmt::format("microphoneStream({})", item.microphoneID);
    }
    std::string operator()(const SystemAudioSchemaItem& item) const {
        if (!item.includedApplicationIDs) {
            return "systemAudio";
        }
        return fmt::format("systemAudio({})", fmt::join(*item.includedApplicationIDs, ", "));
    }
    std::string operator()(const DisplaySchemaItem& item) const { return fmt::format("display({})", item.displayID); }
    std::string operator()(const WindowBasedCropSchemaItem& item) const {
        return fmt::format("windowBasedCrop({})", item.windowID);
    }
    std::string operator()(const AppleDeviceStaticOrientationItem& item) const {
        return fmt::format("appleDeviceStaticOrientation({})", item.deviceID);
    }
};

}  // namespace

std::string fallbackFilename(const WebcamSchemaItem& item) {
    return fmt::format("webcam-{}.mov", item.id);
}

std::string fallbackFilename(const MicrophoneFileSchemaItem& item) {
    return fmt::format("microphone-{}.m4a", item.id);
}

std::string fallbackFilename(const SystemAudioSchemaItem& item) {
    const auto& included = item.includedApplicationIDs;
    if (included && included->size() == 1) {
        return fmt::format("appaudio-{}.m4a", included->front());
    }
    return fmt::format("systemaudio-{}.m4a", ShortID::make());
}

std::string fallbackFilename(const DisplaySchemaItem& item) {
    return fmt::format("display-{}.mov", item.displayID);
}

std::string fallbackFilename(const WindowBasedCropSchemaItem& item) {
    return fmt::format("windowcrop-{}.mov", item.windowID);
}

std::string fallbackFilename(const AppleDeviceStaticOrientationItem& item) {
    return fmt::format("appledevice-{}.mov", item.deviceID);
}

std::string debugDescription(const InteralSchemaItem& item) {
    return std::visit(Description(), item.payload());
}

}  // namespace zorvane
