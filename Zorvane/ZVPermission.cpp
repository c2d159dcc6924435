#include "Zorvane/ZVPermission.hpp"

namespace zorvane {

std::string_view rawValue(ZVPermission permission) {
    switch (permission) {
        case ZVPermission::screenRecording:
            return "screenRecording";
        case ZVPermission::systemAudioRecording:
            return "systemAudioRecording";
        case ZVPermission::microphone:
            return "microphone";
        case ZVPermission::camera:
            return "camera";
        case ZVPermission::inputMonitoring:
            return "inputMonitoring";
        case ZVPermission::accessibilityControl:
            return "accessibilityControl";
    }
    return "";
}

std::string_view rawValue(AVAuthorizationStatus status) {
    switch (status) {
        case AVAuthorizationStatus::notDetermined:
            return "notDetermined";
        case AVAuthorizationStatus::restricted:
            return "restricted";
        case AVAuthorizationStatus::denied:
            return "denied";
        case AVAuthorizationStatus::authorized:
            return "authorized";
    }
    return "";
}

}  // namespace zorvane
