#include "Zorvane/Sources/ZVMicrophone.hpp"

#include <fmt/format.h>

#include <utility>

#include "Zorvane/Internal/Discovery/MicrophoneDiscovery.hpp"
#include "Zorvane/Internal/Discovery/ZVMicrophoneState.hpp"
#include "Zorvane/Internal/Logger.hpp"

namespace zorvane {

ZVMicrophone::List ZVMicrophone::microphones() {
    List microphones = MicrophoneDiscovery::shared()->microphones();
    Logger::forType<ZVMicrophone>().info([&] { return fmt::format("Reporting {} microphones.", microphones.size()); });
    return microphones;
}

ZVAsyncStream<ZVMicrophone::List> ZVMicrophone::updates() {
    return MicrophoneDiscovery::shared()->updates();
}

std::shared_ptr<ZVMicrophone> ZVMicrophone::preferred() {
    return MicrophoneDiscovery::shared()->getPreferred();
}

ZVMicrophone::ZVMicrophone(std::unique_ptr<State> state) : state_(std::move(state)) {}
ZVMicrophone::~ZVMicrophone() = default;

const std::string& ZVMicrophone::id() const {
    return state_->id;
}

std::string ZVMicrophone::localizedName() const {
    return state_->localizedName.value();
}

ZVPublisher<std::string> ZVMicrophone::localizedNamePublisher() const {
    return state_->localizedName.publisher();
}

std::string ZVMicrophone::modelID() const {
    return state_->modelID.value();
}

ZVPublisher<std::string> ZVMicrophone::modelIDPublisher() const {
    return state_->modelID.publisher();
}

std::string ZVMicrophone::manufacturer() const {
    return state_->manufacturer.value();
}

ZVPublisher<std::string> ZVMicrophone::manufacturerPublisher() const {
    return state_->manufacturer.publisher();
}

ZVMicrophone::Availability ZVMicrophone::availability() const {
    return state_->availability.value();
}

ZVPublisher<ZVMicrophone::Availability> ZVMicrophone::availabilityPublisher() const {
    return state_->availability.publisher();
}

std::string ZVMicrophone::debugDescription() const {
    return fmt::format("ZVMicrophone[id:{} localizedName:{} modelID:{} availability:{}]", id(), localizedName(),
                       modelID(), rawValue(availability()));
}

std::string_view rawValue(ZVMicrophone::Availability availability) {
    switch (availability) {
        case ZVMicrophone::Availability::available:
            return "available";
        case ZVMicrophone::Availability::lidClosed:
            return "lidClosed";
        case ZVMicrophone::Availability::unknownSuspended:
            return "unknownSuspended";
        case ZVMicrophone::Availability::notConnected:
            return "notConnected";
    }
    return {};
}

std::string_view debugDescription(ZVMicrophone::Availability availability) {
    return rawValue(availability);
}

std::string_view status(ZVMicrophone::Availability availability) {
    switch (availability) {
        case ZVMicrophone::Availability::available:
            return "Available";
        case ZVMicrophone::Availability::lidClosed:
            return "MacBook lid closed";
        case ZVMicrophone::Availability::unknownSuspended:
            return "Suspended";
        case ZVMicrophone::Availability::notConnected:
            return "Not connected";
    }
    return {};
}

std::string_view recoverySuggestion(ZVMicrophone::Availability availability) {
    switch (availability) {
        case ZVMicrophone::Availability::available:
            return "";
        case ZVMicrophone::Availability::lidClosed:
            return "Open MacBook lid";
        case ZVMicrophone::Availability::unknownSuspended:
            return "Unsuspend microphone";
        case ZVMicrophone::Availability::notConnected:
            return "Connect microphone";
    }
    return {};
}

}  // namespace zorvane
