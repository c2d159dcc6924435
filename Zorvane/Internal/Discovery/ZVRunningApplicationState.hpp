// What an application object holds.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Zorvane/Internal/CurrentValueSubject.hpp"
#include "Zorvane/Sources/ZVRunningApplication.hpp"

namespace zorvane {

/// Written by the application discovery only, on the main executor.
struct ZVRunningApplication::State {
    const std::int32_t id;
    CurrentValueSubject<std::optional<std::string>> name;
    CurrentValueSubject<std::optional<std::string>> bundleIdentifier;
    CurrentValueSubject<Availability> availability;
};

}  // namespace zorvane
