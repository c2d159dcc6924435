#include "Zorvane/Internal/Discovery/AppleDeviceDiscovery.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <set>
#include <utility>
#include <vector>

#include "Zorvane/Internal/Concurrency/Executor.hpp"
#include "Zorvane/Internal/Discovery/EnableDALError.hpp"
#include "Zorvane/Internal/Discovery/SharedDiscovery.hpp"
#include "Zorvane/Internal/Discovery/ZVAppleDeviceState.hpp"
#include "Zorvane/Internal/LogPieces.hpp"
#include "Zorvane/Internal/WithTimeout.hpp"
#include "Zorvane/Platform/AVFoundation/AVCaptureDevice.hpp"
#include "Zorvane/Platform/CoreMediaIO/CMIOHardware.hpp"

namespace zorvane {
namespace {

constexpr double longestListing = 1;  // seconds

AVCaptureDeviceDiscovery::Sessions makeSessions() {
    return {Platform::current()->captureDevices->makeDiscoverySession({AVCaptureDeviceType::externalUnknown},
                                                                      AVMediaType::muxed)};
}

ZVAppleDevice::Availability availabilityOf(const AVCaptureDevice& device) {
    switch (device.pairing()) {
        case AVCaptureDevicePairing::notApplicable:
            break;
        case AVCaptureDevicePairing::notPaired:
            return ZVAppleDevice::Availability::notPaired;
        case AVCaptureDevicePairing::pairedNeedsConnect:
            return ZVAppleDevice::Availability::pairedNeedsConnect;
        case AVCaptureDevicePairing::pairedNeedsReconnect:
            return ZVAppleDevice::Availability::pairedNeedsReconnect;
    }
    return device.isConnected() ? ZVAppleDevice::Availability::available : ZVAppleDevice::Availability::notConnected;
}

std::string description(const AVCaptureDevice& device) {
    return fmt::format("{} {}", device.uniqueID(), debugDescription(device));
}

std::string description(const AVCaptureDeviceDiscovery::Devices& devices) {
    std::vector<std::string> descriptions;
    for (const auto& device : devices) {
        descriptions.push_back(description(*device));
    }
    return fmt::format("[{}]", fmt::join(descriptions, "; "));
}

Task<> waitUntilTrue(AsyncStream<bool> values) {
    while (const auto value = co_await values.next()) {
        if (*value) {
            co_return;
        }
    }
}

}  // namespace

std::shared_ptr<AppleDeviceDiscovery> AppleDeviceDiscovery::shared() {
    return sharedDiscovery<AppleDeviceDiscovery>();
}

AppleDeviceDiscovery::AppleDeviceDiscovery()
    : logger_(Logger::forType<AppleDeviceDiscovery>()),
      strand_(Executor::makeStrand("AppleDeviceDiscovery")),
      avDiscovery_("AppleDeviceDiscovery", makeSessions(), strand_) {}

AppleDeviceDiscovery::~AppleDeviceDiscovery() {
    avDevicesTask_.cancel();
}

void AppleDeviceDiscovery::start() {
    enableDAL();
    logger_.debug("Starting with initial devices");
    apply(avDiscovery_.devices());
    avDevicesTask_ = spawn(refreshOnUpdates(weak_from_this(), avDiscovery_.updates(), logger_), strand_);
}

Task<> AppleDeviceDiscovery::waitUntilListed() const {
    struct TooLong : std::exception {};
    auto listed = [publisher = isListed_.publisher()] { return waitUntilTrue(publisher.values()); };
    auto tooLong = std::make_exception_ptr(TooLong());
    try {
        co_await withTimeout(longestListing, std::move(tooLong), std::move(listed));
    } catch (const TooLong&) {
        logger_.debug("Devices are still being asked.");
    }
}

void AppleDeviceDiscovery::enableDAL() {
    constexpr CMIOObjectPropertyAddress allowScreenCaptureDevices{
        .selector = 0x79657320, .scope = 0x676C6F62, .element = 0};  // 'yes ', 'glob'
    const std::uint32_t allow = 1;
    logger_.debug("Enabling DAL");
    const std::int32_t status = Platform::current()->captureHardware->setPropertyData(
        kCMIOObjectSystemObject, allowScreenCaptureDevices, sizeof allow, &allow);
    if (status != 0) {
        logger_.error("Failed to enable DAL", errorMetadata(std::make_exception_ptr(EnableDALError(status))));
        return;
    }
    logger_.debug("Enabled DAL");
}

void AppleDeviceDiscovery::refresh() {
    Executor::main()->post([weak = weak_from_this(), muxed = avDiscovery_.devices()] {
        if (const auto self = weak.lock()) {
            self->apply(muxed);
            self->isListed_.update(true);
        }
    });
}

void AppleDeviceDiscovery::apply(const Devices& muxed) {
    logger_.trace("Update devices");
    std::set<std::string> present;
    bool anyChanged = false;
    for (const auto& device : muxed) {
        present.insert(device->uniqueID());
        anyChanged |= put(*device, muxed);
    }
    devices_.forEachMissing(present, [&anyChanged](ZVAppleDevice& device) {
        anyChanged |= device.state_->availability.update(ZVAppleDevice::Availability::notConnected);
    });
    devices_.publish({}, anyChanged);
}

bool AppleDeviceDiscovery::put(const AVCaptureDevice& seen, const Devices& muxed) {
    if (seen.isSuspended()) {
        logger_.warning("Device is suspended, unsupported in code, handling as available", [&] {
            return LogMetadata{{"muxed", description(muxed)}, {"device", description(seen)}};
        });
    }
    const ZVAppleDevice& device = devices_.obtain(seen.uniqueID(), [&seen] {
        std::unique_ptr<ZVAppleDevice::State> state(new ZVAppleDevice::State{.id = seen.uniqueID()});
        return std::shared_ptr<ZVAppleDevice>(new ZVAppleDevice(std::move(state)));
    });
    ZVAppleDevice::State& state = *device.state_;
    const std::string modelID = seen.modelID();
    bool changed = state.localizedName.update(seen.localizedName());
    changed |= state.modelID.update(modelID.empty() ? std::nullopt : std::optional(modelID));
    changed |= state.availability.update(availabilityOf(seen));
    return changed;
}

}  // namespace zorvane
