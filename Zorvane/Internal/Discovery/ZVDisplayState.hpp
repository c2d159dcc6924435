// What a display object holds.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>

#include "Zorvane/Internal/CurrentValueSubject.hpp"
#include "Zorvane/Sources/ZVDisplay.hpp"

namespace zorvane {

/// Written by the display discovery only, on the main executor.
struct ZVDisplay::State {
    const std::uint32_t id;
    const bool isBuiltIn;
    std::atomic<std::uint32_t> displayID = 0;
    CurrentValueSubject<std::string> localizedName;
    CurrentValueSubject<bool> isMain;
    CurrentValueSubject<CGRect> frame;
    CurrentValueSubject<Availability> availability;
};

}  // namespace zorvane
