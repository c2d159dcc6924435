// The program's arguments.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <variant>

#include "ExitStatus.hpp"
#include "Zorvane/ZVColorSpace.hpp"
#include "Zorvane/ZVLogger.hpp"
#include "Zorvane/ZVPlatform.hpp"

namespace zorvane::cli {

struct RecordOptions {
    /// Absent for the main display.
    std::optional<std::uint32_t> displayID;
    ZVColorSpace colorSpace = ZVColorSpace::sRGB;
    bool showsCursor = true;
    /// Absent to record until told to stop.
    std::optional<double> seconds;
    /// Absent for a directory of its own below the current one.
    std::optional<std::filesystem::path> output;
    ZVPlatformKind platform = ZVPlatformKind::linuxDesktop;
    bool json = false;
    bool quiet = false;
    /// Absent to show no log lines.
    std::optional<ZVLogLevel> logLevel;
};

struct InfoOptions {
    std::filesystem::path bundle;
    bool json = false;
};

/// What to do; or, when that is done already, how it went: help was shown, or the arguments were wrong and the user
/// has been told how.
using Command = std::variant<RecordOptions, InfoOptions, ExitStatus>;

/// Throws a `std::exception` with a text for the user if help can't be printed.
Command parseCommandLine(int argumentCount, const char* const* arguments);

/// A number of seconds for which one can record. Throws `std::invalid_argument` with a text for the user.
double parseSeconds(const std::string& text);

/// "main" or a display's id. Throws `std::invalid_argument` with a text for the user.
std::optional<std::uint32_t> parseDisplay(const std::string& text);

}  // namespace zorvane::cli
