// Which processes a process descends from.
#pragma once

#include <cstdint>
#include <vector>

namespace zorvane {

/// The process itself, then its parent, its parent's and so on, as it is at this moment: a process whose parent has
/// ended belongs to another one. Just the process if it isn't there, and nothing for a number that none can have.
/// Reads a file of the system for each. Any thread.
std::vector<std::int32_t> processLineage(std::int32_t processID);

}  // namespace zorvane
