// Pieces of log metadata that several objects share. Each gives what makes the metadata once a line is read.
#pragma once

#include <fmt/format.h>

#include <exception>
#include <string>

#include "Zorvane/Internal/Logger.hpp"
#include "Zorvane/ZVError.hpp"

namespace zorvane {

/// Seconds in decimal form, with as many digits as tell the number apart from its neighbours.
inline std::string secondsText(double seconds) {
    return fmt::format("{}", seconds);
}

/// `{"error": debug description}`.
inline auto errorMetadata(std::exception_ptr error) {
    return [error = std::move(error)] { return LogMetadata{{"error", debugDescription(error)}}; };
}

}  // namespace zorvane
