// zorvane permissions
#pragma once

#include "CommandLine.hpp"

namespace zorvane::cli {

/// Tells what may be recorded, why, and how to get what may not. Throws a `std::exception` with a text for the user if
/// that can't be printed.
ExitStatus permissions(const PermissionsOptions& options);

}  // namespace zorvane::cli
