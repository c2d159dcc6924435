#include "Zorvane/Sources/ZVCamera.hpp"

#include <fmt/format.h>

#include <utility>

#include "Zorvane/Internal/Discovery/CameraDiscovery.hpp"
#include "Zorvane/Internal/Discovery/ZVCameraState.hpp"
#include "Zorvane/Internal/Logger.hpp"

namespace zorvane {
namespace {

/// A list in its order, without the cameras that look down on the desk unless they are asked for.
ZVCamera::List filtered(ZVCamera::List cameras, bool includeDeskView) {
    if (!includeDeskView) {
        std::erase_if(cameras, [](const auto& camera) { return camera->isDeskView(); });
    }
    return cameras;
}

}  // namespace

ZVCamera::List ZVCamera::cameras(bool includeDeskView) {
    List cameras = filtered(CameraDiscovery::shared()->cameras(), includeDeskView);
    Logger::forType<ZVCamera>().info([&] { return fmt::format("Reporting {} cameras.", cameras.size()); });
    return cameras;
}

ZVAsyncStream<ZVCamera::List> ZVCamera::updates(bool includeDeskView) {
    const auto pick = [includeDeskView](const List& cameras) { return filtered(cameras, includeDeskView); };
    return CameraDiscovery::shared()->publisher().values(pick);
}

std::shared_ptr<ZVCamera> ZVCamera::preferred() {
    return CameraDiscovery::shared()->getPreferred();
}

ZVCamera::ZVCamera(std::unique_ptr<State> state) : state_(std::move(state)) {}
ZVCamera::~ZVCamera() = default;

const std::string& ZVCamera::id() const {
    return state_->id;
}

bool ZVCamera::isDeskView() const {
    return state_->isDeskView;
}

std::string ZVCamera::localizedName() const {
    return state_->localizedName.value();
}

ZVPublisher<std::string> ZVCamera::localizedNamePublisher() const {
    return state_->localizedName.publisher();
}

std::string ZVCamera::modelID() const {
    return state_->modelID.value();
}

ZVPublisher<std::string> ZVCamera::modelIDPublisher() const {
    return state_->modelID.publisher();
}

std::string ZVCamera::manufacturer() const {
    return state_->manufacturer.value();
}

ZVPublisher<std::string> ZVCamera::manufacturerPublisher() const {
    return state_->manufacturer.publisher();
}

ZVCamera::Availability ZVCamera::availability() const {
    return state_->availability.value();
}

ZVPublisher<ZVCamera::Availability> ZVCamera::availabilityPublisher() const {
    return state_->availability.publisher();
}

std::string ZVCamera::debugDescription() const {
    return fmt::format("ZVCamera[id:{} isDeskView:{} localizedName:{} modelID:{} availability:{}]", id(), isDeskView(),
                       localizedName(), modelID(), rawValue(availability()));
}

std::string_view rawValue(ZVCamera::Availability availability) {
    switch (availability) {
        case ZVCamera::Availability::available:
            return "available";
        case ZVCamera::Availability::lidClosed:
            return "lidClosed";
        case ZVCamera::Availability::unknownSuspended:
            return "unknownSuspended";
        case ZVCamera::Availability::notConnected:
            return "notConnected";
    }
    return {};
}

std::string_view debugDescription(ZVCamera::Availability availability) {
    return rawValue(availability);
}

std::string_view status(ZVCamera::Availability availability) {
    switch (availability) {
        case ZVCamera::Availability::available:
            return "Available";
        case ZVCamera::Availability::lidClosed:
            return "MacBook lid closed";
        case ZVCamera::Availability::unknownSuspended:
            return "Suspended";
        case ZVCamera::Availability::notConnected:
            return "Not connected";
    }
    return {};
}

std::string_view recoverySuggestion(ZVCamera::Availability availability) {
    switch (availability) {
        case ZVCamera::Availability::available:
            return "";
        case ZVCamera::Availability::lidClosed:
            return "Open MacBook lid";
        case ZVCamera::Availability::unknownSuspended:
            return "Unsuspend camera";
        case ZVCamera::Availability::notConnected:
            return "Connect camera";
    }
    return {};
}

}  // namespace zorvane
