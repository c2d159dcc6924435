#include "Zorvane/Internal/Discovery/CameraDiscovery.hpp"

#include <utility>

#include "Zorvane/Internal/CGInterop/MacModelSpecs.hpp"
#include "Zorvane/Internal/Concurrency/Executor.hpp"
#include "Zorvane/Internal/Discovery/SharedDiscovery.hpp"
#include "Zorvane/Internal/Discovery/ZVCameraState.hpp"
#include "Zorvane/Internal/ZVUserPreferred.hpp"
#include "Zorvane/Platform/AVFoundation/AVCaptureDevice.hpp"
#include "Zorvane/Platform/IOKit/IOPlatformExpert.hpp"

namespace zorvane {
namespace {

AVCaptureDeviceDiscovery::Sessions videoSession(AVCaptureDevices& devices, std::vector<AVCaptureDeviceType> types) {
    return {devices.makeDiscoverySession(std::move(types), AVMediaType::video)};
}

ZVCamera::Availability availabilityOf(const AVCaptureDevice& device, bool suspendsByLid) {
    if (!device.isConnected()) {
        return ZVCamera::Availability::notConnected;
    }
    if (!device.isSuspended()) {
        return ZVCamera::Availability::available;
    }
    const bool isBuiltIn = device.transportType() == AVCaptureDeviceTransportType::builtIn;
    return isBuiltIn && suspendsByLid ? ZVCamera::Availability::lidClosed : ZVCamera::Availability::unknownSuspended;
}

}  // namespace

std::shared_ptr<CameraDiscovery> CameraDiscovery::shared() {
    return sharedDiscovery<CameraDiscovery>();
}

CameraDiscovery::CameraDiscovery()
    : logger_(Logger::forType<CameraDiscovery>()),
      strand_(Executor::makeStrand("CameraDiscovery")),
      captureDevices_(Platform::current()->captureDevices),
      baseCamsDiscovery_(
          "CameraDiscovery",
          videoSession(*captureDevices_, {AVCaptureDeviceType::builtInWideAngleCamera, AVCaptureDeviceType::external,
                                          AVCaptureDeviceType::externalUnknown}),
          strand_),
      deskViewDiscovery_("CameraDiscovery", videoSession(*captureDevices_, {AVCaptureDeviceType::deskViewCamera}),
                         strand_) {}

CameraDiscovery::~CameraDiscovery() {
    baseDevicesTask_.cancel();
    deskDevicesTask_.cancel();
}

void CameraDiscovery::start() {
    logger_.debug("Starting with initial devices");
    apply(read());
    baseDevicesTask_ = spawn(refreshOnUpdates(weak_from_this(), baseCamsDiscovery_.updates(), logger_), strand_);
    deskDevicesTask_ = spawn(refreshOnUpdates(weak_from_this(), deskViewDiscovery_.updates(), logger_), strand_);
}

std::shared_ptr<ZVCamera> CameraDiscovery::getPreferred() const {
    List cameras = this->cameras();
    const auto preferredIDs = ZVUserPreferred::shared()->cameraIDs();
    // One that looks down on the desk is chosen, never fallen back on.
    std::erase_if(cameras, [&preferredIDs](const auto& camera) {
        return camera->isDeskView() && std::ranges::count(preferredIDs, camera->id()) == 0;
    });
    return preferredDevice(std::move(cameras), preferredIDs, captureDevices_->defaultDeviceID(AVMediaType::video));
}

void CameraDiscovery::triggerUpdate() {
    logger_.debug("Trigger update");
    strand_->post([weak = weak_from_this()] {
        if (const auto self = weak.lock()) {
            self->refresh();
        }
    });
}

void CameraDiscovery::refresh() {
    Executor::main()->post([weak = weak_from_this(), reading = read()] {
        if (const auto self = weak.lock()) {
            self->apply(reading);
        }
    });
}

CameraDiscovery::Reading CameraDiscovery::read() const {
    const PoolBlockingScope blocking;
    return {.baseCams = baseCamsDiscovery_.devices(),
            .deskView = deskViewDiscovery_.devices(),
            .preferredIDs = ZVUserPreferred::shared()->cameraIDs(),
            .suspendsByLid = MacModelSpecs::isT2MacBook() || Platform::current()->platformExpert->hasLid()};
}

void CameraDiscovery::apply(const Reading& reading) {
    std::set<std::string> present;
    bool anyChanged = false;
    for (const auto& device : reading.baseCams) {
        present.insert(device->uniqueID());
        anyChanged |= put(*device, false, reading.suspendsByLid);
    }
    for (const auto& device : reading.deskView) {
        present.insert(device->uniqueID());
        anyChanged |= put(*device, true, reading.suspendsByLid);
    }
    devices_.forEachMissing(present, [&anyChanged](ZVCamera& camera) {
        anyChanged |= camera.state_->availability.update(ZVCamera::Availability::notConnected);
    });
    devices_.publish(reading.preferredIDs, anyChanged);
}

bool CameraDiscovery::put(const AVCaptureDevice& seen, bool isDeskView, bool suspendsByLid) {
    const ZVCamera& camera = devices_.obtain(seen.uniqueID(), [&] {
        std::unique_ptr<ZVCamera::State> state(new ZVCamera::State{.id = seen.uniqueID(), .isDeskView = isDeskView});
        return std::shared_ptr<ZVCamera>(new ZVCamera(std::move(state)));
    });
    ZVCamera::State& state = *camera.state_;
    bool changed = state.localizedName.update(seen.localizedName());
    changed |= state.modelID.update(seen.modelID());
    changed |= state.manufacturer.update(seen.manufacturer());
    changed |= state.availability.update(availabilityOf(seen, suspendsByLid));
    return changed;
}

}  // namespace zorvane
