// What a camera object holds.
#pragma once

#include <string>

#include "Zorvane/Internal/CurrentValueSubject.hpp"
#include "Zorvane/Sources/ZVCamera.hpp"

namespace zorvane {

/// Written by the camera discovery only, on the main executor.
struct ZVCamera::State {
    const std::string id;
    const bool isDeskView;
    CurrentValueSubject<std::string> localizedName;
    CurrentValueSubject<std::string> modelID;
    CurrentValueSubject<std::string> manufacturer;
    CurrentValueSubject<Availability> availability{Availability::notConnected};
};

}  // namespace zorvane
