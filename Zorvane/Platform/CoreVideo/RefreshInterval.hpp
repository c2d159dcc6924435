// How long a display shows one picture.
#pragma once

#include <chrono>

#include "Zorvane/Platform/CoreGraphics/CGDisplays.hpp"

namespace zorvane {

/// The time between two refreshes of a display; that of 60 Hz where its rate is unknown, or the display has gone.
std::chrono::nanoseconds refreshInterval(CGDisplays& displays, CGDirectDisplayID displayID);

}  // namespace zorvane
