// What a recording has to be allowed, and what the system says to it.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace zorvane {

/// Where a permission stands.
enum class AVAuthorizationStatus : std::uint8_t {
    notDetermined,  ///< the user will be asked, or has to allow it in a way that this library can't use
    restricted,     ///< not to be had here, whatever the user allows: the service or device is missing
    denied,         ///< the user or the administrator keeps it from this process
    authorized,
};

enum class ZVPermission : std::uint8_t {
    screenRecording,
    systemAudioRecording,
    microphone,
    camera,
    inputMonitoring,       ///< to see what mouse and keyboard do in other applications
    accessibilityControl,  ///< to act in the user's place: move the pointer, press keys
};

inline constexpr std::array allPermissions{ZVPermission::screenRecording, ZVPermission::systemAudioRecording,
                                           ZVPermission::microphone,      ZVPermission::camera,
                                           ZVPermission::inputMonitoring, ZVPermission::accessibilityControl};

/// One permission, for people. The texts are English sentences.
struct ZVPermissionReport {
    AVAuthorizationStatus status = AVAuthorizationStatus::authorized;
    std::string explanation;  ///< why it stands so
    std::string remedy;       ///< how to get it, or more of it; empty if there is nothing to do

    bool operator==(const ZVPermissionReport&) const = default;
};

/// The name of the case, as in "screenRecording" and "notDetermined".
std::string_view rawValue(ZVPermission permission);
std::string_view rawValue(AVAuthorizationStatus status);

}  // namespace zorvane
