// A recording's outcome as the user reads it, and as a script does.
#pragma once

#include <cstdint>
#include <exception>
#include <string>
#include <vector>

#include "RecordOutcome.hpp"

namespace zorvane::cli {

/// Names of the movies that could not be closed, and so are in the bundle but not in its manifest.
std::vector<std::string> unclosedMedia(const RecordOutcome& outcome);

enum class JSONForm : std::uint8_t {
    indented,
    eventLine,  ///< on one line, with "event" as its first key
};

/// One JSON object and a line feed.
std::string recordJSON(const RecordOutcome& outcome, JSONForm form);

/// One line: how long, how many frames, how large.
std::string recordSummary(const RecordOutcome& outcome);

/// Whether an error lacks a text made for the user, so that the log has to help.
bool isUnexplained(const std::exception_ptr& error);

/// What the user should know of an error, on one line.
std::string userText(const std::exception_ptr& error);

}  // namespace zorvane::cli
