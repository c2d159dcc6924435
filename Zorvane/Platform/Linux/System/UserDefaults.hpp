// User defaults in a JSON file of the user's.
#pragma once

#include <filesystem>

#include "Zorvane/Internal/Logger.hpp"
#include "Zorvane/Platform/Foundation/NSUserDefaults.hpp"

namespace zorvane {

/// Where the user keeps this library's settings: "zorvane/preferences.json" below $XDG_CONFIG_HOME, else below
/// "~/.config". Empty if the environment names neither.
std::filesystem::path preferencesFile();

/// One JSON object in one file that only the user may read.
///
/// A reader sees the file whole, as it was before or after an update: updates write a file beside it, bring that to the
/// disk and put it in its place. They keep the keys they don't know. Where the file is a symbolic link, its target is
/// replaced and the link stays.
///
/// A file that holds no JSON object counts as empty. The next update doesn't destroy it: it moves it to
/// "preferences.json.corrupt-" and the time, and says so in the log.
class UserDefaults final : public NSUserDefaults {
  public:
    /// Touches no file. An empty path stands for a store that can't keep anything.
    explicit UserDefaults(std::filesystem::path file = preferencesFile());

    std::optional<NSUserDefaultsArray> array(std::string_view key) override;
    /// Waits up to two seconds for another process's update, and for the disk.
    void update(std::string_view key, const Change& change) override;

  private:
    /// To be called with the lock held; `file` is no symbolic link.
    void changeLocked(const std::filesystem::path& file, std::string_view key, const Change& change);

    const std::filesystem::path file_;
    const Logger logger_;
};

}  // namespace zorvane
