// What the program tells its caller by its exit status.
#pragma once

#include <cstdint>

namespace zorvane::cli {

enum class ExitStatus : std::uint8_t {
    complete = 0,
    wrongUsage = 2,
    savedWithErrors = 3,
    nothingRecorded = 4,
};

}  // namespace zorvane::cli
