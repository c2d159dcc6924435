#include "Zorvane/Platform/Linux/LinuxCaptureAccess.hpp"

#include <unistd.h>

#include <cstdlib>
#include <string_view>

#include "Zorvane/Platform/Linux/PermissionRules.hpp"

namespace zorvane {
namespace {

std::string_view environment(const char* variable) {
    const char* value = std::getenv(variable);
    return value ? value : "";
}

SessionFacts readSessionFacts() {
    return {.isWayland = !environment("WAYLAND_DISPLAY").empty() || environment("XDG_SESSION_TYPE") == "wayland",
            .isFlatpak = ::access("/.flatpak-info", F_OK) == 0};
}

}  // namespace

ZVPermissionReport LinuxCaptureAccess::report(ZVPermission permission) {
    switch (permission) {
        case ZVPermission::screenRecording:
        case ZVPermission::inputMonitoring:
        case ZVPermission::accessibilityControl:
            return judgeDesktop(permission, readXServerFacts(*session_), readSessionFacts());
        case ZVPermission::systemAudioRecording:
        case ZVPermission::microphone:
            return judgeSound(pipeWireStatus(), readSessionFacts());
        case ZVPermission::camera:
            return judgeCamera(pipeWireStatus(), readCameraNodes(), readSessionFacts());
    }
    return {};
}

bool LinuxCaptureAccess::request(ZVPermission permission) {
    return report(permission).status == AVAuthorizationStatus::authorized;
}

void LinuxCaptureAccess::requestAccess(AVMediaType mediaType, std::function<void(bool isGranted)> completion) {
    completion(request(mediaType == AVMediaType::audio ? ZVPermission::microphone : ZVPermission::camera));
}

}  // namespace zorvane
