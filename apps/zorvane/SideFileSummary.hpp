// What a side file tells, in a few numbers.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zorvane::cli {

/// The events of mouse and keyboard.
struct InputSummary {
    /// By kind: "down", "up", "moved", "dragged" and "cursorChanged" of the mouse, "keyDown", "keyUp" and
    /// "modifiersChanged".
    std::map<std::string_view, std::uint64_t> events;
    std::map<std::string_view, std::uint64_t> clicks;  ///< by button
    std::uint64_t keys = 0;                            ///< pressed; those that holding a key down made are not counted

    std::uint64_t eventCount() const;
};

/// How long a window was in front.
struct WindowOnTop {
    std::uint32_t windowID = 0;
    std::optional<std::string> title;  ///< the last one it had
    std::optional<std::string> application;
    double seconds = 0;
};

struct TopWindowSummary {
    std::vector<WindowOnTop> windows;  ///< the longest first
    double secondsWithout = 0;         ///< no window was in front
};

/// Each throws a `std::exception` if the file can't be read.
InputSummary readInputSummary(const std::filesystem::path& sideFile);
TopWindowSummary readTopWindowSummary(const std::filesystem::path& sideFile);

/// For people, on one line: "120 events: 100 moves, 3 clicks (2 primary, 1 secondary), 17 keys".
std::string summaryText(const InputSummary& summary);
/// For people, a line for each window.
std::vector<std::string> summaryLines(const TopWindowSummary& summary);

}  // namespace zorvane::cli
