#include "Zorvane/Internal/Discovery/MicrophoneDiscovery.hpp"

#include <algorithm>
#include <set>
#include <utility>

#include "Zorvane/Internal/CGInterop/MacModelSpecs.hpp"
#include "Zorvane/Internal/Concurrency/Executor.hpp"
#include "Zorvane/Internal/Discovery/SharedDiscovery.hpp"
#include "Zorvane/Internal/Discovery/ZVMicrophoneState.hpp"
#include "Zorvane/Internal/ZVUserPreferred.hpp"
#include "Zorvane/Platform/AVFoundation/AVCaptureDevice.hpp"
#include "Zorvane/Platform/IOKit/IOPlatformExpert.hpp"

namespace zorvane {
namespace {

constexpr std::size_t audioSession = 0;
constexpr std::size_t videoSession = 1;

AVCaptureDeviceDiscovery::Sessions makeSessions(AVCaptureDevices& devices) {
    return {devices.makeDiscoverySession({AVCaptureDeviceType::builtInMicrophone, AVCaptureDeviceType::external,
                                          AVCaptureDeviceType::externalUnknown},
                                         AVMediaType::audio),
            devices.makeDiscoverySession({AVCaptureDeviceType::builtInWideAngleCamera}, AVMediaType::video)};
}

bool isBuiltIn(const AVCaptureDevice& device) {
    return device.transportType() == AVCaptureDeviceTransportType::builtIn;
}

}  // namespace

std::shared_ptr<MicrophoneDiscovery> MicrophoneDiscovery::shared() {
    return sharedDiscovery<MicrophoneDiscovery>();
}

MicrophoneDiscovery::MicrophoneDiscovery()
    : logger_(Logger::forType<MicrophoneDiscovery>()),
      strand_(Executor::makeStrand("MicrophoneDiscovery")),
      captureDevices_(Platform::current()->captureDevices),
      avDiscovery_("MicrophoneDiscovery", makeSessions(*captureDevices_), strand_) {}

MicrophoneDiscovery::~MicrophoneDiscovery() {
    avDevicesTask_.cancel();
}

void MicrophoneDiscovery::start() {
    logger_.debug("Starting with initial devices");
    apply(read());
    avDevicesTask_ = spawn(refreshOnUpdates(weak_from_this(), avDiscovery_.updates(), logger_), strand_);
}

std::shared_ptr<ZVMicrophone> MicrophoneDiscovery::getPreferred() const {
    return preferredDevice(microphones(), ZVUserPreferred::shared()->microphoneIDs(),
                           captureDevices_->defaultDeviceID(AVMediaType::audio));
}

void MicrophoneDiscovery::triggerUpdate() {
    logger_.debug("Trigger update");
    strand_->post([weak = weak_from_this()] {
        if (const auto self = weak.lock()) {
            self->refresh();
        }
    });
}

void MicrophoneDiscovery::refresh() {
    Executor::main()->post([weak = weak_from_this(), reading = read()] {
        if (const auto self = weak.lock()) {
            self->apply(reading);
        }
    });
}

MicrophoneDiscovery::Reading MicrophoneDiscovery::read() const {
    const PoolBlockingScope blocking;
    return {.microphones = avDiscovery_.devices(audioSession),
            .preferredIDs = ZVUserPreferred::shared()->microphoneIDs(),
            .lid = readLid()};
}

MicrophoneDiscovery::Lid MicrophoneDiscovery::readLid() const {
    const Devices cameras = avDiscovery_.devices(videoSession);
    const bool isCameraSuspended = std::ranges::any_of(cameras, &AVCaptureDevice::isSuspended);
    if (MacModelSpecs::isT2MacBook()) {
        return isCameraSuspended ? Lid::closed : Lid::open;
    }
    // A camera that is awake shows that the lid is open, whatever keeps a microphone silent.
    const bool mayBeClosed = cameras.empty() || isCameraSuspended;
    return mayBeClosed && Platform::current()->platformExpert->hasLid() ? Lid::closedIfSuspended : Lid::open;
}

void MicrophoneDiscovery::apply(const Reading& reading) {
    std::set<std::string> present;
    bool anyChanged = false;
    for (const auto& device : reading.microphones) {
        logger_.trace("Update device", [&] { return LogMetadata{{device->uniqueID(), debugDescription(*device)}}; });
        present.insert(device->uniqueID());
        anyChanged |= put(*device, reading.lid);
    }
    devices_.forEachMissing(present, [&anyChanged](ZVMicrophone& microphone) {
        anyChanged |= microphone.state_->availability.update(ZVMicrophone::Availability::notConnected);
    });
    devices_.publish(reading.preferredIDs, anyChanged);
}

bool MicrophoneDiscovery::put(const AVCaptureDevice& seen, Lid lid) {
    const ZVMicrophone& microphone = devices_.obtain(seen.uniqueID(), [&seen] {
        std::unique_ptr<ZVMicrophone::State> state(new ZVMicrophone::State{.id = seen.uniqueID()});
        return std::shared_ptr<ZVMicrophone>(new ZVMicrophone(std::move(state)));
    });
    ZVMicrophone::State& state = *microphone.state_;
    bool changed = state.localizedName.update(seen.localizedName());
    changed |= state.modelID.update(seen.modelID());
    changed |= state.manufacturer.update(seen.manufacturer());
    changed |= state.availability.update(availabilityOf(seen, lid));
    return changed;
}

ZVMicrophone::Availability MicrophoneDiscovery::availabilityOf(const AVCaptureDevice& device, Lid lid) {
    if (!device.isConnected()) {
        return ZVMicrophone::Availability::notConnected;
    }
    const bool isSuspended = device.isSuspended();
    if (isBuiltIn(device) && (lid == Lid::closed || (lid == Lid::closedIfSuspended && isSuspended))) {
        return ZVMicrophone::Availability::lidClosed;
    }
    return isSuspended ? ZVMicrophone::Availability::unknownSuspended : ZVMicrophone::Availability::available;
}

}  // namespace zorvane
