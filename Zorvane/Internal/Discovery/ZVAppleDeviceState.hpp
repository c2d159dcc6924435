// What an Apple device object holds.
#pragma once

#include <optional>
#include <string>

#include "Zorvane/Internal/CurrentValueSubject.hpp"
#include "Zorvane/Sources/ZVAppleDevice.hpp"

namespace zorvane {

/// Written by the Apple device discovery only, on the main executor.
struct ZVAppleDevice::State {
    const std::string id;
    CurrentValueSubject<std::string> localizedName;
    CurrentValueSubject<std::optional<std::string>> modelID;
    CurrentValueSubject<Availability> availability{Availability::notConnected};
};

}  // namespace zorvane
