// zorvane record
#pragma once

#include "CommandLine.hpp"

namespace zorvane::cli {

/// Records, and tells how it went. Throws a `std::exception` with a text for the user if the outcome can't be printed.
ExitStatus record(const RecordOptions& options);

}  // namespace zorvane::cli
