// The program's arguments.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <variant>
#include <vector>

#include "ExitStatus.hpp"
#include "OptionValues.hpp"
#include "SourceKind.hpp"
#include "Zorvane/ZVColorSpace.hpp"
#include "Zorvane/ZVLogger.hpp"
#include "Zorvane/ZVPlatform.hpp"
#include "Zorvane/ZVSchemaItem.hpp"

namespace zorvane::cli {

/// What is recorded is what is named here, and the main display if nothing is.
struct RecordOptions {
    std::optional<DisplayName> display;
    /// Where this window is, in place of a display.
    std::optional<std::uint32_t> windowID;
    /// Ids, or "default". A camera's movie has the sound of the first microphone; without one, of the default one. All
    /// other microphones get files of their own.
    std::vector<std::string> cameras;
    std::vector<std::string> microphones;
    /// Ids of phones, or of what shows their screens.
    std::vector<std::string> devices;
    /// The sound of all applications but the excluded ones, which are process ids.
    bool systemAudio = false;
    std::vector<std::int32_t> excludedProcesses;
    /// Process ids of applications whose sound gets a file of its own each.
    std::vector<std::int32_t> applications;
    /// Puts the system's sound into the display's movie.
    bool displayAudio = false;
    /// Write side files of what the user does, and of the window in front.
    bool mouse = false;
    bool keyboard = false;
    bool topWindow = false;
    /// Writes segments and playlists instead of single files.
    bool segmented = false;
    std::set<ZVScreenRecordingExcludeOptions> excluding;
    ZVColorSpace colorSpace = ZVColorSpace::sRGB;
    bool showsCursor = true;
    /// Absent to record until told to stop.
    std::optional<double> seconds;
    /// Absent for a directory of its own below the current one.
    std::optional<std::filesystem::path> output;
    ZVPlatformKind platform = ZVPlatformKind::linuxDesktop;
    bool json = false;
    /// One JSON object a line while the recording goes on; only with `json`.
    bool events = false;
    bool quiet = false;
    /// Absent to show no log lines.
    std::optional<ZVLogLevel> logLevel;
};

/// Whether anything but a display or a window is named.
inline bool namesOtherSource(const RecordOptions& options) {
    return !options.cameras.empty() || !options.microphones.empty() || !options.devices.empty() ||
           options.systemAudio || !options.applications.empty();
}

struct SourcesOptions {
    std::vector<SourceKind> kinds{allSourceKinds.begin(), allSourceKinds.end()};
    bool watch = false;
    bool json = false;
    ZVPlatformKind platform = ZVPlatformKind::linuxDesktop;
    /// Absent to show no log lines.
    std::optional<ZVLogLevel> logLevel;
};

struct InfoOptions {
    std::filesystem::path bundle;
    bool json = false;
};

struct PermissionsOptions {
    ZVPlatformKind platform = ZVPlatformKind::linuxDesktop;
    bool json = false;
};

/// What to do; or, when that is done already, how it went: help was shown, or the arguments were wrong and the user
/// has been told how.
using Command = std::variant<RecordOptions, SourcesOptions, InfoOptions, PermissionsOptions, ExitStatus>;

/// Throws a `std::exception` with a text for the user if help can't be printed.
Command parseCommandLine(int argumentCount, const char* const* arguments);

}  // namespace zorvane::cli
