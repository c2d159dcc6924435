#include "Zorvane/Sources/ZVAppleDevice.hpp"

#include <fmt/format.h>

#include <utility>

#include "Zorvane/Internal/Discovery/AppleDeviceDiscovery.hpp"
#include "Zorvane/Internal/Discovery/ZVAppleDeviceState.hpp"
#include "Zorvane/Internal/Logger.hpp"

namespace zorvane {

ZVTask<ZVAppleDevice::List> ZVAppleDevice::appleDevices() {
    const auto discovery = AppleDeviceDiscovery::shared();
    co_await discovery->waitUntilListed();
    List devices = discovery->devices();
    Logger::forType<ZVAppleDevice>().info([&] { return fmt::format("Reporting {} devices.", devices.size()); });
    co_return devices;
}

ZVAsyncStream<ZVAppleDevice::List> ZVAppleDevice::updates() {
    return AppleDeviceDiscovery::shared()->updates();
}

ZVAppleDevice::ZVAppleDevice(std::unique_ptr<State> state) : state_(std::move(state)) {}
ZVAppleDevice::~ZVAppleDevice() = default;

const std::string& ZVAppleDevice::id() const {
    return state_->id;
}

std::string ZVAppleDevice::localizedName() const {
    return state_->localizedName.value();
}

ZVPublisher<std::string> ZVAppleDevice::localizedNamePublisher() const {
    return state_->localizedName.publisher();
}

std::optional<std::string> ZVAppleDevice::modelID() const {
    return state_->modelID.value();
}

ZVPublisher<std::optional<std::string>> ZVAppleDevice::modelIDPublisher() const {
    return state_->modelID.publisher();
}

ZVAppleDevice::Availability ZVAppleDevice::availability() const {
    return state_->availability.value();
}

ZVPublisher<ZVAppleDevice::Availability> ZVAppleDevice::availabilityPublisher() const {
    return state_->availability.publisher();
}

std::string ZVAppleDevice::debugDescription() const {
    return fmt::format("ZVAppleDevice[id:{} localizedName:{} modelID:{} availability:{}]", id(), localizedName(),
                       modelID().value_or("nil"), rawValue(availability()));
}

std::string_view rawValue(ZVAppleDevice::Availability availability) {
    switch (availability) {
        case ZVAppleDevice::Availability::available:
            return "available";
        case ZVAppleDevice::Availability::notPaired:
            return "notPaired";
        case ZVAppleDevice::Availability::notConnected:
            return "notConnected";
        case ZVAppleDevice::Availability::pairedNeedsConnect:
            return "pairedNeedsConnect";
        case ZVAppleDevice::Availability::pairedNeedsReconnect:
            return "pairedNeedsReconnect";
    }
    return {};
}

std::string_view debugDescription(ZVAppleDevice::Availability availability) {
    return rawValue(availability);
}

std::string_view status(ZVAppleDevice::Availability availability) {
    switch (availability) {
        case ZVAppleDevice::Availability::available:
            return "Available";
        case ZVAppleDevice::Availability::notPaired:
            return "Device not paired";
        case ZVAppleDevice::Availability::notConnected:
            return "Device not connected";
        case ZVAppleDevice::Availability::pairedNeedsConnect:
            return "Device paired, but not connected";
        case ZVAppleDevice::Availability::pairedNeedsReconnect:
            return "Device paired, needs to reconnect";
    }
    return {};
}

std::string_view recoverySuggestion(ZVAppleDevice::Availability availability) {
    switch (availability) {
        case ZVAppleDevice::Availability::available:
            return "";
        case ZVAppleDevice::Availability::notPaired:
            return "Tap 'Trust' on iPhone";
        case ZVAppleDevice::Availability::notConnected:
            return "Connect via cable";
        case ZVAppleDevice::Availability::pairedNeedsConnect:
            return "(Re-)connect via cable";
        case ZVAppleDevice::Availability::pairedNeedsReconnect:
            return "Unplug cable, and reconnect again";
    }
    return {};
}

}  // namespace zorvane
