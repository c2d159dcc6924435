// The texts of options, as values.
#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>

#include "Zorvane/ZVSchemaItem.hpp"

namespace zorvane::cli {

// Each throws `std::invalid_argument` with a text for the user.

/// A number of seconds for which one can record.
double parseSeconds(const std::string& text);

/// How the user names a display.
struct DisplayName {
    std::optional<std::uint32_t> id;  ///< absent for the main one
};

/// "main" or a display's id.
DisplayName parseDisplay(const std::string& text);

/// A window's id, in decimal or, as X tools print it, with 0x in front.
std::uint32_t parseWindow(const std::string& text);

/// A process's id.
std::int32_t parseProcess(const std::string& text);

/// Names of what to leave out, with commas between them: "current,indicator".
std::set<ZVScreenRecordingExcludeOptions> parseExclusions(const std::string& text);

}  // namespace zorvane::cli
