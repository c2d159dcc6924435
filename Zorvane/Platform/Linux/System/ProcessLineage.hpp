// Which processes a process descends from.
#pragma once

#include <cstdint>
#include <vector>

namespace zorvane {

/// Now, in the count in which the system tells when processes started: hundredths of a second since its boot.
std::uint64_t processMoment();

/// The process itself, then its parent, its parent's and so on, as it is now: a process whose parent has ended belongs
/// to another one. Those that started after `moment` are left out: whoever was meant by such a number then has ended.
/// Just the process if it isn't there, and nothing for a number that none can have. Reads a file of the system for
/// each. Any thread.
std::vector<std::int32_t> processLineage(std::int32_t processID, std::uint64_t moment);

}  // namespace zorvane
