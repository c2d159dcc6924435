// The applications that are installed, as their desktop entries describe them.
#pragma once

#include <chrono>
#include <filesystem>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace zorvane {

/// What of one desktop entry identifies and shows an application.
struct DesktopEntry {
    std::string identifier;    ///< the file's name without ".desktop"; of one in a subfolder, "folder-name"
    std::string name;          ///< in the user's language
    std::string icon;          ///< a name of the icon theme, or a path; may be empty
    std::string startupClass;  ///< the class of its windows; may be empty
    /// The file's name of the program it starts; empty if that says nothing about who runs, as with an interpreter.
    std::string executable;

    bool operator==(const DesktopEntry&) const = default;
};

/// Reads one entry; nothing if it describes no application or is marked as deleted. `locale` as in "de_AT.UTF-8". Pure.
std::optional<DesktopEntry> parseDesktopEntry(std::string_view text, std::string identifier, std::string_view locale);

/// Where the user's and the system's data lie, the user's first, by the XDG variables of the environment.
std::vector<std::filesystem::path> dataDirectories();

/// Any thread. Files are read when first asked for and again when a folder has changed since, which is looked at once a
/// second at most.
class DesktopEntries {
  public:
    /// `dataDirectories` hold the folders "applications"; an entry of an earlier one hides one of the same name in a
    /// later one.
    explicit DesktopEntries(std::vector<std::filesystem::path> dataDirectories);

    /// The application that owns windows of this class, or is called like it, or starts this program; in this order.
    /// Any of the three may be empty. A program that several entries start tells nothing.
    std::optional<DesktopEntry> find(std::string_view windowClass, std::string_view windowInstance,
                                     std::string_view executable);

  private:
    struct Folder {
        std::filesystem::path path;
        std::filesystem::file_time_type changed;
    };
    void update();
    void readAll();
    void readFolder(const std::filesystem::path& folder, const std::string& prefix, std::set<std::string>& seen);
    const DesktopEntry* findByExecutable(std::string_view executable) const;

    const std::vector<std::filesystem::path> dataDirectories_;
    const std::string locale_;
    std::mutex mutex_;
    std::optional<std::chrono::steady_clock::time_point> looked_;  // guarded by mutex_
    std::vector<Folder> folders_;                                  // guarded by mutex_; as of the last reading
    std::vector<DesktopEntry> entries_;                            // guarded by mutex_
};

}  // namespace zorvane
