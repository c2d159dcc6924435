// Which program a process runs.
#pragma once

#include <cstdint>
#include <string_view>

namespace zorvane {

/// Whether a process runs another program than the one whose file has this name, or one that the current user isn't
/// told of. False if there is no such process. Any thread.
bool runsAnotherProgram(std::int32_t processID, std::string_view program);

}  // namespace zorvane
