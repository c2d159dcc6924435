// zorvane info
#pragma once

#include "CommandLine.hpp"

namespace zorvane::cli {

/// Tells what is in a bundle. Throws a `std::exception` with a text for the user if that can't be printed.
ExitStatus info(const InfoOptions& options);

}  // namespace zorvane::cli
