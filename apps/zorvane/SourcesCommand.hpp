// zorvane sources
#pragma once

#include "CommandLine.hpp"

namespace zorvane::cli {

/// Lists what there is to record; with `watch` until told to stop. Throws a `std::exception` with a text for the user
/// if that can't be printed.
ExitStatus sources(const SourcesOptions& options);

}  // namespace zorvane::cli
