#include "Zorvane/Sources/ZVDisplay.hpp"

#include <fmt/format.h>

#include <utility>

#include "Zorvane/Internal/Discovery/DisplayDiscovery.hpp"
#include "Zorvane/Internal/Discovery/ZVDisplayState.hpp"
#include "Zorvane/Internal/Logger.hpp"

namespace zorvane {

ZVDisplay::List ZVDisplay::displays() {
    List displays = DisplayDiscovery::shared()->displays();
    Logger::forType<ZVDisplay>().info([&] { return fmt::format("Reporting {} displays.", displays.size()); });
    return displays;
}

std::shared_ptr<ZVDisplay> ZVDisplay::preferred() {
    return DisplayDiscovery::shared()->getPreferred();
}

ZVAsyncStream<ZVDisplay::List> ZVDisplay::updates() {
    return DisplayDiscovery::shared()->updates();
}

std::exception_ptr ZVDisplay::discoveryFailure() {
    return DisplayDiscovery::shared()->failure();
}

ZVDisplay::ZVDisplay(std::unique_ptr<State> state) : state_(std::move(state)) {}
ZVDisplay::~ZVDisplay() = default;

std::uint32_t ZVDisplay::id() const {
    return state_->id;
}

std::uint32_t ZVDisplay::displayID() const {
    return state_->displayID;
}

bool ZVDisplay::isBuiltIn() const {
    return state_->isBuiltIn;
}

std::string ZVDisplay::localizedName() const {
    return state_->localizedName.value();
}

ZVPublisher<std::string> ZVDisplay::localizedNamePublisher() const {
    return state_->localizedName.publisher();
}

bool ZVDisplay::isMain() const {
    return state_->isMain.value();
}

ZVPublisher<bool> ZVDisplay::isMainPublisher() const {
    return state_->isMain.publisher();
}

CGRect ZVDisplay::frame() const {
    return state_->frame.value();
}

ZVPublisher<CGRect> ZVDisplay::framePublisher() const {
    return state_->frame.publisher();
}

ZVDisplay::Availability ZVDisplay::availability() const {
    return state_->availability.value();
}

ZVPublisher<ZVDisplay::Availability> ZVDisplay::availabilityPublisher() const {
    return state_->availability.publisher();
}

std::string ZVDisplay::debugDescription() const {
    return fmt::format("ZVDisplay[id:{} name:{} isMain:{} frame:{}]", id(), localizedName(), isMain(),
                       zorvane::debugDescription(frame()));
}

std::string_view rawValue(ZVDisplay::Availability availability) {
    switch (availability) {
        case ZVDisplay::Availability::available:
            return "available";
        case ZVDisplay::Availability::lidClosed:
            return "lidClosed";
        case ZVDisplay::Availability::notConnected:
            return "notConnected";
    }
    return {};
}

std::string_view debugDescription(ZVDisplay::Availability availability) {
    return rawValue(availability);
}

std::string_view status(ZVDisplay::Availability availability) {
    switch (availability) {
        case ZVDisplay::Availability::available:
            return "Available";
        case ZVDisplay::Availability::lidClosed:
            return "MacBook lid closed";
        case ZVDisplay::Availability::notConnected:
            return "Not connected";
    }
    return {};
}

std::string_view recoverySuggestion(ZVDisplay::Availability availability) {
    switch (availability) {
        case ZVDisplay::Availability::available:
            return "";
        case ZVDisplay::Availability::lidClosed:
            return "Open MacBook lid";
        case ZVDisplay::Availability::notConnected:
            return "Connect display";
    }
    return {};
}

}  // namespace zorvane
