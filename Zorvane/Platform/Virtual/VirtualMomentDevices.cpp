// The words of a script about the machine and the devices at it.

#include <cmath>
#include <utility>

#include "Zorvane/Platform/Virtual/VirtualCaptureDevices.hpp"
#include "Zorvane/Platform/Virtual/VirtualMoment.hpp"

namespace zorvane {
namespace {

std::chrono::nanoseconds fromSeconds(double seconds) {
    return std::chrono::nanoseconds(std::llround(seconds * 1e9));
}

}  // namespace

const VirtualMoment& VirtualMoment::changeDevices(std::function<void(VirtualCaptureDevices&)> change) const {
    return perform([change = std::move(change)](VirtualDesktop& desktop) { change(*desktop.captureDevices()); });
}

const VirtualMoment& VirtualMoment::setMachine(VirtualMachine machine) const {
    return change([machine = std::move(machine)](VirtualDesktopState& state) { state.machine = machine; });
}

const VirtualMoment& VirtualMoment::closeLid() const {
    perform([](VirtualDesktop& desktop) {
        std::vector<CGDirectDisplayID> covered;
        desktop.changeScene([&covered](VirtualScene& scene) { covered = scene.closeLid(); });
        for (const CGDirectDisplayID displayID : covered) {
            desktop.now().stopStreams(displayID, SCStreamErrorCode::noCaptureSource);
        }
    });
    return changeDevices([](VirtualCaptureDevices& devices) { devices.setBuiltInSuspended(true); });
}

const VirtualMoment& VirtualMoment::openLid() const {
    changePicture([](VirtualScene& scene) { scene.openLid(); });
    return changeDevices([](VirtualCaptureDevices& devices) { devices.setBuiltInSuspended(false); });
}

const VirtualMoment& VirtualMoment::plugDevice(VirtualDevice device) const {
    return changeDevices([device = std::move(device)](VirtualCaptureDevices& devices) { devices.plug(device); });
}

const VirtualMoment& VirtualMoment::unplugDevice(std::string uniqueID) const {
    return changeDevices([id = std::move(uniqueID)](VirtualCaptureDevices& devices) { devices.unplug(id); });
}

const VirtualMoment& VirtualMoment::renameDevice(std::string uniqueID, std::string name) const {
    return changeDevices([id = std::move(uniqueID), name = std::move(name)](VirtualCaptureDevices& devices) {
        devices.rename(id, name);
    });
}

const VirtualMoment& VirtualMoment::connectDevice(std::string uniqueID) const {
    return changeDevices(
        [id = std::move(uniqueID)](VirtualCaptureDevices& devices) { devices.setConnected(id, true); });
}

const VirtualMoment& VirtualMoment::disconnectDevice(std::string uniqueID) const {
    return changeDevices(
        [id = std::move(uniqueID)](VirtualCaptureDevices& devices) { devices.setConnected(id, false); });
}

const VirtualMoment& VirtualMoment::suspendDevice(std::string uniqueID) const {
    return changeDevices(
        [id = std::move(uniqueID)](VirtualCaptureDevices& devices) { devices.setSuspended(id, true); });
}

const VirtualMoment& VirtualMoment::resumeDevice(std::string uniqueID) const {
    return changeDevices(
        [id = std::move(uniqueID)](VirtualCaptureDevices& devices) { devices.setSuspended(id, false); });
}

const VirtualMoment& VirtualMoment::occupyDevice(std::string uniqueID) const {
    return changeDevices([id = std::move(uniqueID)](VirtualCaptureDevices& devices) { devices.setOccupied(id, true); });
}

const VirtualMoment& VirtualMoment::freeDevice(std::string uniqueID) const {
    return changeDevices(
        [id = std::move(uniqueID)](VirtualCaptureDevices& devices) { devices.setOccupied(id, false); });
}

const VirtualMoment& VirtualMoment::pairDevice(std::string uniqueID, AVCaptureDevicePairing pairing) const {
    return changeDevices(
        [id = std::move(uniqueID), pairing](VirtualCaptureDevices& devices) { devices.setPairing(id, pairing); });
}

const VirtualMoment& VirtualMoment::changeMicrophone(std::string uniqueID,
                                                     std::function<void(VirtualMicrophone&)> change) const {
    return changeDevices([id = std::move(uniqueID), change = std::move(change)](VirtualCaptureDevices& devices) {
        devices.changeMicrophone(id, change);
    });
}

const VirtualMoment& VirtualMoment::playToMicrophone(std::string uniqueID, double frequency) const {
    return changeMicrophone(std::move(uniqueID),
                            [frequency](VirtualMicrophone& microphone) { microphone.frequency = frequency; });
}

const VirtualMoment& VirtualMoment::loseMicrophoneSound(std::string uniqueID, double seconds) const {
    const auto until = hostTime_ + fromSeconds(seconds);
    return changeMicrophone(std::move(uniqueID),
                            [until](VirtualMicrophone& microphone) { microphone.lostUntil = until; });
}

const VirtualMoment& VirtualMoment::changeCamera(std::string uniqueID,
                                                 std::function<void(VirtualCamera&)> change) const {
    return changeDevices([id = std::move(uniqueID), change = std::move(change)](VirtualCaptureDevices& devices) {
        devices.changeCamera(id, change);
    });
}

const VirtualMoment& VirtualMoment::flashAtCamera(std::string uniqueID, double seconds) const {
    const auto flash = [from = hostTime_, until = hostTime_ + fromSeconds(seconds)](VirtualCamera& camera) {
        camera.flashFrom = from;
        camera.flashUntil = until;
    };
    return changeCamera(std::move(uniqueID), flash);
}

const VirtualMoment& VirtualMoment::loseCameraPictures(std::string uniqueID, double seconds) const {
    const auto until = hostTime_ + fromSeconds(seconds);
    return changeCamera(std::move(uniqueID), [until](VirtualCamera& camera) { camera.lostUntil = until; });
}

const VirtualMoment& VirtualMoment::turnCamera(std::string uniqueID) const {
    return changeCamera(std::move(uniqueID),
                        [](VirtualCamera& camera) { std::swap(camera.size.width, camera.size.height); });
}

const VirtualMoment& VirtualMoment::setCaptureClock(std::optional<double> secondsBehind) const {
    const auto offset = secondsBehind ? std::optional(fromSeconds(*secondsBehind)) : std::nullopt;
    return changeDevices([offset](VirtualCaptureDevices& devices) {
        devices.changeSessions([offset](VirtualSessionConditions& conditions) { conditions.clockOffset = offset; });
    });
}

const VirtualMoment& VirtualMoment::refuseInCapture(std::optional<VirtualSessionRefusal> refusal) const {
    return changeDevices([refusal](VirtualCaptureDevices& devices) {
        devices.changeSessions([refusal](VirtualSessionConditions& conditions) { conditions.refusal = refusal; });
    });
}

const VirtualMoment& VirtualMoment::chooseDevice(AVMediaType mediaType, std::string uniqueID) const {
    return changeDevices(
        [mediaType, id = std::move(uniqueID)](VirtualCaptureDevices& devices) { devices.setDefault(mediaType, id); });
}

}  // namespace zorvane
