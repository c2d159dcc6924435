// What a microphone object holds.
#pragma once

#include <string>

#include "Zorvane/Internal/CurrentValueSubject.hpp"
#include "Zorvane/Sources/ZVMicrophone.hpp"

namespace zorvane {

/// Written by the microphone discovery only, on the main executor.
struct ZVMicrophone::State {
    const std::string id;
    CurrentValueSubject<std::string> localizedName;
    CurrentValueSubject<std::string> modelID;
    CurrentValueSubject<std::string> manufacturer;
    CurrentValueSubject<Availability> availability{Availability::notConnected};
};

}  // namespace zorvane
