// The library's log lines on standard error.
#pragma once

#include <optional>

#include "StandardError.hpp"
#include "Zorvane/ZVLogger.hpp"

namespace zorvane::cli {

/// Shows lines of at least `level`, none without one. They go to the system's log all the same. The result shows them
/// for as long as it lives; `output` must outlive all threads that log.
ZVLogger::HandlerToken showLog(std::optional<ZVLogLevel> level, StandardError& output);

/// Where the user finds the lines that were not shown, as a sentence.
std::string whereTheLogIs();

}  // namespace zorvane::cli
