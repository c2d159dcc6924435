#include "Zorvane/Platform/Virtual/VirtualCaptureDevices.hpp"

#include <algorithm>
#include <utility>

#include "Zorvane/Platform/AVFoundation/AVError.hpp"
#include "Zorvane/Platform/Foundation/NSError.hpp"
#include "Zorvane/Platform/Virtual/VirtualCaptureSession.hpp"

namespace zorvane {

class VirtualCaptureDevices::Session final : public AVCaptureDeviceDiscoverySession {
  public:
    Session(std::shared_ptr<VirtualCaptureDevices> owner, std::vector<AVCaptureDeviceType> deviceTypes,
            AVMediaType mediaType)
        : owner_(std::move(owner)), deviceTypes_(std::move(deviceTypes)), mediaType_(mediaType) {}

    std::vector<std::shared_ptr<AVCaptureDevice>> devices() const override {
        std::vector<std::shared_ptr<AVCaptureDevice>> matching;
        for (const auto& device : owner_->devices()) {
            const VirtualDevice& what = device->description();
            if (what.mediaType == mediaType_ && std::ranges::count(deviceTypes_, what.deviceType) > 0) {
                matching.push_back(device);
            }
        }
        return matching;
    }

    NSKeyValueObservation observeDevices(std::function<void(ChangeKind kind)> handler) override {
        auto token = owner_->observers_.add([mediaType = mediaType_, handler](AVMediaType changed) {
            if (changed == mediaType) {
                handler(ChangeKind::setting);
            }
        });
        handler(ChangeKind::initial);
        return token;
    }

  private:
    const std::shared_ptr<VirtualCaptureDevices> owner_;
    const std::vector<AVCaptureDeviceType> deviceTypes_;
    const AVMediaType mediaType_;
};

std::shared_ptr<AVCaptureDeviceDiscoverySession> VirtualCaptureDevices::makeDiscoverySession(
    std::vector<AVCaptureDeviceType> deviceTypes, AVMediaType mediaType) {
    return std::make_shared<Session>(shared_from_this(), std::move(deviceTypes), mediaType);
}

std::string VirtualCaptureDevices::defaultDeviceID(AVMediaType mediaType) {
    MutexLock lock(mutex_);
    if (const auto chosen = defaults_.find(mediaType); chosen != defaults_.end()) {
        return chosen->second;
    }
    const auto first = std::ranges::find_if(devices_, [mediaType](const auto& device) {
        return device->description().mediaType == mediaType && device->isConnected();
    });
    return first == devices_.end() ? std::string() : (*first)->uniqueID();
}

std::shared_ptr<AVCaptureDevice> VirtualCaptureDevices::deviceWithUniqueID(const std::string& uniqueID) {
    const auto device = find(uniqueID);
    return device && device->isConnected() ? device : nullptr;
}

AVCaptureDeviceInput VirtualCaptureDevices::makeDeviceInput(std::shared_ptr<AVCaptureDevice> device) {
    if (!deviceWithUniqueID(device->uniqueID())) {
        throw NSError(AVFoundationErrorDomain, AVErrorDeviceWasDisconnected,
                      {.localizedDescription = "The device was unplugged."});
    }
    if (device->isInUseByAnotherApplication()) {
        throw NSError(AVFoundationErrorDomain, AVErrorDeviceInUseByAnotherApplication,
                      {.localizedDescription = "Another program is using “" + device->localizedName() + "”."});
    }
    return {std::move(device)};
}

std::shared_ptr<AVCaptureSession> VirtualCaptureDevices::makeCaptureSession() {
    return std::make_shared<VirtualCaptureSession>(shared_from_this());
}

VirtualMicrophone VirtualCaptureDevices::microphone(const std::string& uniqueID) const {
    MutexLock lock(mutex_);
    const auto known = microphones_.find(uniqueID);
    return known == microphones_.end() ? VirtualMicrophone() : known->second;
}

void VirtualCaptureDevices::changeMicrophone(const std::string& uniqueID,
                                             const std::function<void(VirtualMicrophone&)>& change) {
    MutexLock lock(mutex_);
    VirtualMicrophone& microphone = microphones_[uniqueID];
    change(microphone);
    const AVAudioFormat format = microphone.format;
    lock.unlock();
    if (const auto device = find(uniqueID)) {
        device->setSoundFormat(format);
    }
}

VirtualCamera VirtualCaptureDevices::camera(const std::string& uniqueID) const {
    MutexLock lock(mutex_);
    const auto known = cameras_.find(uniqueID);
    return known == cameras_.end() ? VirtualCamera() : known->second;
}

void VirtualCaptureDevices::changeCamera(const std::string& uniqueID,
                                         const std::function<void(VirtualCamera&)>& change) {
    MutexLock lock(mutex_);
    VirtualCamera& camera = cameras_[uniqueID];
    change(camera);
    const VirtualCamera changed = camera;
    lock.unlock();
    if (const auto device = find(uniqueID)) {
        device->setPictures(changed.size, changed.minFrameDuration);
    }
}

VirtualSessionConditions VirtualCaptureDevices::sessionConditions() const {
    MutexLock lock(mutex_);
    return sessionConditions_;
}

void VirtualCaptureDevices::changeSessions(const std::function<void(VirtualSessionConditions&)>& change) {
    MutexLock lock(mutex_);
    change(sessionConditions_);
}

bool VirtualCaptureDevices::isPresent(const std::string& uniqueID) const {
    const auto device = find(uniqueID);
    return device && device->isConnected() && !device->isSuspended() &&
           device->pairing() == AVCaptureDevicePairing::notApplicable;
}

void VirtualCaptureDevices::plug(VirtualDevice device) {
    const AVMediaType mediaType = device.mediaType;
    const auto plugged = std::make_shared<VirtualCaptureDevice>(std::move(device));
    const VirtualDevice& what = plugged->description();
    MutexLock lock(mutex_);
    microphones_[what.uniqueID].format = what.soundFormat;
    VirtualCamera& camera = cameras_[what.uniqueID];
    camera.size = what.pictureSize;
    plugged->setPictures(camera.size, camera.minFrameDuration);
    const auto place = std::ranges::find(devices_, plugged->uniqueID(), &VirtualCaptureDevice::uniqueID);
    if (place == devices_.end()) {
        devices_.push_back(plugged);
    } else {
        *place = plugged;
    }
    lock.unlock();
    listChanged(mediaType);
}

void VirtualCaptureDevices::unplug(const std::string& uniqueID) {
    if (const auto device = find(uniqueID)) {
        MutexLock lock(mutex_);
        std::erase(devices_, device);
        lock.unlock();
        listChanged(device->description().mediaType);
    }
}

void VirtualCaptureDevices::rename(const std::string& uniqueID, const std::string& localizedName) {
    if (const auto device = find(uniqueID)) {
        VirtualDevice renamed = device->description();
        renamed.localizedName = localizedName;
        plug(std::move(renamed));
    }
}

void VirtualCaptureDevices::setConnected(const std::string& uniqueID, bool isConnected) {
    if (const auto device = find(uniqueID)) {
        device->setConnected(isConnected);
        listChanged(device->description().mediaType);
    }
}

void VirtualCaptureDevices::setSuspended(const std::string& uniqueID, bool isSuspended) {
    if (const auto device = find(uniqueID)) {
        device->setSuspended(isSuspended);
    }
}

void VirtualCaptureDevices::setOccupied(const std::string& uniqueID, bool isOccupied) {
    if (const auto device = find(uniqueID)) {
        device->setOccupied(isOccupied);
    }
}

void VirtualCaptureDevices::setPairing(const std::string& uniqueID, AVCaptureDevicePairing pairing) {
    if (const auto device = find(uniqueID)) {
        device->setPairing(pairing);
    }
}

void VirtualCaptureDevices::setBuiltInSuspended(bool isSuspended) {
    for (const auto& device : devices()) {
        if (device->transportType() == AVCaptureDeviceTransportType::builtIn) {
            device->setSuspended(isSuspended);
        }
    }
}

void VirtualCaptureDevices::setDefault(AVMediaType mediaType, const std::string& uniqueID) {
    MutexLock lock(mutex_);
    defaults_[mediaType] = uniqueID;
}

void VirtualCaptureDevices::showPhones(bool show) {
    MutexLock lock(mutex_);
    showsPhones_ = show;
    lock.unlock();
    listChanged(AVMediaType::muxed);
}

VirtualCaptureDevices::DeviceList VirtualCaptureDevices::devices() const {
    MutexLock lock(mutex_);
    DeviceList listed = devices_;
    if (!showsPhones_) {
        std::erase_if(listed, [](const auto& device) { return device->description().mediaType == AVMediaType::muxed; });
    }
    return listed;
}

std::shared_ptr<VirtualCaptureDevice> VirtualCaptureDevices::find(const std::string& uniqueID) const {
    MutexLock lock(mutex_);
    const auto found = std::ranges::find(devices_, uniqueID, &VirtualCaptureDevice::uniqueID);
    return found == devices_.end() ? nullptr : *found;
}

}  // namespace zorvane
