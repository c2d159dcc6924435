#include "Zorvane/Platform/Virtual/VirtualCaptureAccess.hpp"

#include <chrono>
#include <cmath>

namespace zorvane {
namespace {

ZVPermission permissionFor(AVMediaType mediaType) {
    return mediaType == AVMediaType::audio ? ZVPermission::microphone : ZVPermission::camera;
}

std::chrono::nanoseconds fromSeconds(double seconds) {
    return std::chrono::nanoseconds(std::llround(seconds * 1e9));
}

}  // namespace

ZVPermissionReport VirtualCaptureAccess::report(ZVPermission permission) {
    switch (const AVAuthorizationStatus status = access(permission).status) {
        case AVAuthorizationStatus::authorized:
            return {status, "The virtual desktop allows it.", ""};
        case AVAuthorizationStatus::notDetermined:
            return {status, "Nobody has been asked yet.", "Ask for it."};
        case AVAuthorizationStatus::denied:
        case AVAuthorizationStatus::restricted:
            return {status, "The virtual desktop forbids it.", "Change its script."};
    }
    return {};
}

bool VirtualCaptureAccess::request(ZVPermission permission) {
    ask(permission, [](bool) {});
    return access(permission).status == AVAuthorizationStatus::authorized;
}

void VirtualCaptureAccess::requestAccess(AVMediaType mediaType, std::function<void(bool isGranted)> completion) {
    ask(permissionFor(mediaType), std::move(completion));
}

bool VirtualCaptureAccess::hasUsageDescription(AVMediaType mediaType) {
    return access(permissionFor(mediaType)).hasUsageDescription;
}

VirtualAccess VirtualCaptureAccess::access(ZVPermission permission) const {
    return desktop_->withState(
        [permission](VirtualDesktopState& state) { return state.conditions.access[permission]; });
}

void VirtualCaptureAccess::ask(ZVPermission permission, std::function<void(bool isGranted)> completion) {
    const VirtualAccess asked = access(permission);
    if (asked.status != AVAuthorizationStatus::notDetermined) {
        completion(asked.status == AVAuthorizationStatus::authorized);
        return;
    }
    const auto answer = [permission, completion = std::move(completion)](VirtualDesktop& desktop) {
        const bool isGranted = desktop.withState([permission](VirtualDesktopState& state) {
            VirtualAccess& access = state.conditions.access[permission];
            access.status = access.userAllows ? AVAuthorizationStatus::authorized : AVAuthorizationStatus::denied;
            return access.userAllows;
        });
        completion(isGranted);
    };
    desktop_->perform(desktop_->clock()->now() + fromSeconds(asked.secondsToAnswer), answer);
}

}  // namespace zorvane
