#include "Zorvane/Platform/Virtual/VirtualCaptureDevice.hpp"

namespace zorvane {

VirtualDevice VirtualDevice::camera(std::string uniqueID, std::string localizedName) {
    VirtualDevice device;
    device.uniqueID = std::move(uniqueID);
    device.localizedName = std::move(localizedName);
    return device;
}

VirtualDevice VirtualDevice::builtInCamera(std::string uniqueID, std::string localizedName) {
    VirtualDevice device = camera(std::move(uniqueID), std::move(localizedName));
    device.deviceType = AVCaptureDeviceType::builtInWideAngleCamera;
    device.transportType = AVCaptureDeviceTransportType::builtIn;
    return device;
}

VirtualDevice VirtualDevice::deskViewCamera(std::string uniqueID, std::string localizedName) {
    VirtualDevice device = camera(std::move(uniqueID), std::move(localizedName));
    device.deviceType = AVCaptureDeviceType::deskViewCamera;
    return device;
}

VirtualDevice VirtualDevice::microphone(std::string uniqueID, std::string localizedName,
                                        const AVAudioFormat& soundFormat) {
    VirtualDevice device = camera(std::move(uniqueID), std::move(localizedName));
    device.mediaType = AVMediaType::audio;
    device.soundFormat = soundFormat;
    return device;
}

VirtualDevice VirtualDevice::builtInMicrophone(std::string uniqueID, std::string localizedName) {
    VirtualDevice device = microphone(std::move(uniqueID), std::move(localizedName));
    device.deviceType = AVCaptureDeviceType::builtInMicrophone;
    device.transportType = AVCaptureDeviceTransportType::builtIn;
    return device;
}

VirtualDevice VirtualDevice::phone(std::string uniqueID, std::string localizedName) {
    VirtualDevice device = camera(std::move(uniqueID), std::move(localizedName));
    device.mediaType = AVMediaType::muxed;
    device.deviceType = AVCaptureDeviceType::externalUnknown;
    device.pictureSize = {360, 640};
    return device;
}

CMFormatDescription VirtualCaptureDevice::activeFormat() const {
    CMFormatDescription description;
    MutexLock lock(mutex_);
    if (device_.mediaType == AVMediaType::audio) {
        description.mediaType = CMMediaType::audio;
        description.audioFormat = soundFormat_;
    } else {
        description.dimensions = pictureSize_;
    }
    return description;
}

CMTime VirtualCaptureDevice::activeVideoMinFrameDuration() const {
    MutexLock lock(mutex_);
    return device_.mediaType == AVMediaType::audio ? kCMTimeInvalid : minFrameDuration_;
}

void VirtualCaptureDevice::setSoundFormat(const AVAudioFormat& format) {
    MutexLock lock(mutex_);
    soundFormat_ = format;
}

void VirtualCaptureDevice::setPictures(const CMVideoDimensions& size, CMTime minFrameDuration) {
    MutexLock lock(mutex_);
    pictureSize_ = size;
    minFrameDuration_ = minFrameDuration;
}

NSKeyValueObservation VirtualCaptureDevice::observeSuspended(std::function<void()> handler) {
    return observers_.add(std::move(handler));
}

void VirtualCaptureDevice::setSuspended(bool isSuspended) {
    isSuspended_ = isSuspended;
    observers_.notify();
}

void VirtualCaptureDevice::setPairing(AVCaptureDevicePairing pairing) {
    pairing_ = pairing;
    observers_.notify();
}

}  // namespace zorvane
