#include "Zorvane/Sources/ZVRunningApplication.hpp"

#include <fmt/format.h>

#include <utility>

#include "Zorvane/Internal/DefaultApplicationIcon.hpp"
#include "Zorvane/Internal/Discovery/ApplicationDiscovery.hpp"
#include "Zorvane/Internal/Discovery/ZVRunningApplicationState.hpp"
#include "Zorvane/Internal/Logger.hpp"
#include "Zorvane/Platform/Platform.hpp"

namespace zorvane {

ZVRunningApplication::List ZVRunningApplication::applications(FilterOptions) {
    List applications = ApplicationDiscovery::shared()->applications();
    Logger::forType<ZVRunningApplication>().info(
        [&] { return fmt::format("Reporting {} applications.", applications.size()); });
    return applications;
}

ZVAsyncStream<ZVRunningApplication::List> ZVRunningApplication::updates(FilterOptions) {
    return ApplicationDiscovery::shared()->updates();
}

ZVRunningApplication::ZVRunningApplication(std::unique_ptr<State> state) : state_(std::move(state)) {}
ZVRunningApplication::~ZVRunningApplication() = default;

std::int32_t ZVRunningApplication::id() const {
    return state_->id;
}

std::optional<std::string> ZVRunningApplication::name() const {
    return state_->name.value();
}

std::optional<std::string> ZVRunningApplication::bundleIdentifier() const {
    return state_->bundleIdentifier.value();
}

ZVRunningApplication::Availability ZVRunningApplication::availability() const {
    return state_->availability.value();
}

ZVPublisher<ZVRunningApplication::Availability> ZVRunningApplication::availabilityPublisher() const {
    return state_->availability.publisher();
}

NSImage ZVRunningApplication::icon() const {
    auto icon = Platform::current()->workspace->icon(id());
    return icon ? std::move(*icon) : defaultApplicationIcon();
}

std::string ZVRunningApplication::debugDescription() const {
    return fmt::format("ZVRunningApplication[id:{} name:{}]", id(), name().value_or("nil"));
}

std::string_view rawValue(ZVRunningApplication::Availability availability) {
    switch (availability) {
        case ZVRunningApplication::Availability::available:
            return "available";
        case ZVRunningApplication::Availability::notRunning:
            return "notRunning";
    }
    return {};
}

std::string_view debugDescription(ZVRunningApplication::Availability availability) {
    return rawValue(availability);
}

}  // namespace zorvane
