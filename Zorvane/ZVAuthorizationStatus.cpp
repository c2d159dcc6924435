#include "Zorvane/ZVAuthorizationStatus.hpp"

#include <memory>

#include "Zorvane/Internal/Concurrency/Continuation.hpp"
#include "Zorvane/Internal/Logger.hpp"
#include "Zorvane/Platform/AVFoundation/CaptureAccess.hpp"
#include "Zorvane/Platform/Platform.hpp"

namespace zorvane {
namespace {

std::shared_ptr<CaptureAccess> captureAccess() {
    return Platform::current()->captureAccess;
}

bool isAuthorized(ZVPermission permission) {
    return captureAccess()->report(permission).status == AVAuthorizationStatus::authorized;
}

/// An application that doesn't say what it wants a device for may be refused by the system without a question.
void checkUsageDescription(AVMediaType mediaType, const char* complaint) {
    if (!captureAccess()->hasUsageDescription(mediaType)) {
        Logger::forType<ZVAuthorizationStatus>().error(complaint);
    }
}

ZVTask<bool> requestAccess(AVMediaType mediaType) {
    auto [continuation, waiter] = makeContinuation<bool>();
    auto answer = [asked = std::move(continuation)](bool isGranted) { asked.resume(isGranted); };
    captureAccess()->requestAccess(mediaType, std::move(answer));
    co_return co_await std::move(waiter);
}

}  // namespace

AVAuthorizationStatus ZVAuthorizationStatus::camera() {
    return captureAccess()->report(ZVPermission::camera).status;
}

AVAuthorizationStatus ZVAuthorizationStatus::microphone() {
    return captureAccess()->report(ZVPermission::microphone).status;
}

bool ZVAuthorizationStatus::screenRecording() {
    return isAuthorized(ZVPermission::screenRecording);
}

bool ZVAuthorizationStatus::systemAudioRecording() {
    return screenRecording();
}

bool ZVAuthorizationStatus::inputMonitoring() {
    return isAuthorized(ZVPermission::inputMonitoring);
}

bool ZVAuthorizationStatus::accessibilityControl() {
    return isAuthorized(ZVPermission::accessibilityControl);
}

ZVTask<bool> ZVAuthorizationStatus::requestCameraAccess() {
    checkUsageDescription(AVMediaType::video,
                          "Missing camera usage description, cannot request camera access.\n"
                          "Add NSCameraUsageDescription key in Info.plist");
    co_return co_await requestAccess(AVMediaType::video);
}

ZVTask<bool> ZVAuthorizationStatus::requestMicrophoneAccess() {
    checkUsageDescription(AVMediaType::audio,
                          "Missing microphone usage description, cannot request microphone access.\n"
                          "Add NSMicrophoneUsageDescription key in Info.plist");
    co_return co_await requestAccess(AVMediaType::audio);
}

bool ZVAuthorizationStatus::requestScreenRecording() {
    return captureAccess()->request(ZVPermission::screenRecording);
}

bool ZVAuthorizationStatus::requestSystemAudioRecording() {
    return requestScreenRecording();
}

bool ZVAuthorizationStatus::requestInputMonitoring() {
    return captureAccess()->request(ZVPermission::inputMonitoring);
}

bool ZVAuthorizationStatus::requestAccessibilityControl() {
    return captureAccess()->request(ZVPermission::accessibilityControl);
}

ZVPermissionReport ZVAuthorizationStatus::report(ZVPermission permission) {
    return captureAccess()->report(permission);
}

}  // namespace zorvane
