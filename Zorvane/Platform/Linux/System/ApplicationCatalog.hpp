// Which application a window's process is.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "Zorvane/Platform/Linux/System/DesktopEntries.hpp"

namespace zorvane {

/// What an application is called, in valid UTF-8.
struct ApplicationIdentity {
    std::string name;        ///< for people, in their language; may be empty
    std::string identifier;  ///< of its desktop entry, else its windows' class; may be empty
    std::string icon;        ///< as in `DesktopEntry`

    bool operator==(const ApplicationIdentity&) const = default;
};

/// Any thread. Reads files, mostly none.
class ApplicationCatalog {
  public:
    explicit ApplicationCatalog(std::vector<std::filesystem::path> dataDirectories);

    /// By the installed application that fits the window's names or the process's program; else by the window's class,
    /// else by the process's name. A process of 0 stands for an unknown one.
    ApplicationIdentity identify(std::int32_t processID, const std::string& windowClass,
                                 const std::string& windowInstance);

    /// The file of the application's icon; nothing if it has none.
    std::optional<std::filesystem::path> iconFile(const ApplicationIdentity& application) const;

  private:
    const std::vector<std::filesystem::path> dataDirectories_;
    DesktopEntries entries_;
};

}  // namespace zorvane
