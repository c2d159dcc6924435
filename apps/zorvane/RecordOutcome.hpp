// How a recording went.
#pragma once

#include <cstdint>
#include <exception>
#include <filesystem>
#include <string_view>
#include <vector>

#include "ExitStatus.hpp"
#include "Zorvane/ZVRecorder.hpp"

namespace zorvane::cli {

struct RecordOutcome {
    enum class Status : std::uint8_t {
        complete,  ///< all that was asked for; also when the user ended it in the desktop
        partial,   ///< some of it could not be saved
        aborted,   ///< it ended before its time; what there was up to then is saved
        failed,    ///< nothing was recorded
    };

    Status status = Status::failed;
    ZVRecorder::Result result;
    ZVRecorder::Statistics statistics;
    /// What went wrong, in the order in which it did. None is a group of others.
    std::vector<std::exception_ptr> errors;

    /// Seconds; 0 if nothing was recorded.
    double duration() const;
    ExitStatus exitStatus() const;
};

/// The status's name, as JSON holds it.
std::string_view rawValue(RecordOutcome::Status status);

/// The errors of a group, one by one; of anything else, itself.
std::vector<std::exception_ptr> ungrouped(const std::exception_ptr& error);

}  // namespace zorvane::cli
