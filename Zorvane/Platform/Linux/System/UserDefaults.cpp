#include "Zorvane/Platform/Linux/System/UserDefaults.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <limits>
#include <utility>

#include <nlohmann/json.hpp>

#include "Zorvane/Internal/LogPieces.hpp"
#include "Zorvane/Platform/Foundation/NSError.hpp"
#include "Zorvane/Platform/Foundation/PrivateFiles.hpp"
#include "Zorvane/Platform/Linux/System/AtomicFile.hpp"
#include "Zorvane/Platform/Linux/System/FileLock.hpp"

namespace zorvane {
namespace {

namespace fs = std::filesystem;
using JSON = nlohmann::ordered_json;

constexpr std::chrono::milliseconds longestLockWait{2000};

/// A directory that a variable of the environment names; empty if it names none. Relative ones don't count.
fs::path directoryFrom(const char* variable) {
    const char* value = std::getenv(variable);
    const fs::path path = value ? value : "";
    return path.is_absolute() ? path : fs::path();
}

/// Makes a directory and those above it that are missing, for the user alone.
void createDirectories(const fs::path& directory) {
    if (fs::is_directory(directory)) {
        return;
    }
    if (directory.has_relative_path()) {
        createDirectories(directory.parent_path());
    }
    static_cast<void>(createPrivateDirectory(directory));
}

/// Nothing if the text isn't a JSON object. No text at all is an empty one.
std::optional<JSON> parseObject(const std::optional<std::string>& text) {
    if (!text) {
        return JSON::object();
    }
    JSON json = JSON::parse(*text, nullptr, false);
    return json.is_object() ? std::optional(std::move(json)) : std::nullopt;
}

bool isUnsigned32(const JSON& value) {
    return value.is_number_unsigned() && value.get<std::uint64_t>() <= std::numeric_limits<std::uint32_t>::max();
}

std::optional<NSUserDefaultsArray> decodeArray(const JSON& object, std::string_view key) {
    const auto found = object.find(key);
    if (found == object.end() || !found->is_array()) {
        return std::nullopt;
    }
    if (std::ranges::all_of(*found, [](const JSON& element) { return element.is_string(); })) {
        return found->get<std::vector<std::string>>();
    }
    if (std::ranges::all_of(*found, &isUnsigned32)) {
        return found->get<std::vector<std::uint32_t>>();
    }
    return std::nullopt;
}

JSON encode(const NSUserDefaultsArray& array) {
    return std::visit([](const auto& elements) { return JSON(elements); }, array);
}

/// Moves a file out of the way, and returns where to.
fs::path putAside(const fs::path& path) {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    fs::path aside = path;
    aside += fmt::format(".corrupt-{}", std::chrono::duration_cast<std::chrono::milliseconds>(now).count());
    moveFile(path, aside);
    return aside;
}

}  // namespace

fs::path preferencesFile() {
    fs::path directory = directoryFrom("XDG_CONFIG_HOME");
    if (directory.empty()) {
        const fs::path home = directoryFrom("HOME");
        std::error_code ignored;
        directory = fs::is_directory(home, ignored) ? home / ".config" : fs::path();
    }
    return directory.empty() ? directory : directory / "zorvane" / "preferences.json";
}

UserDefaults::UserDefaults(fs::path file) : file_(std::move(file)), logger_(Logger::forType<UserDefaults>()) {}

std::optional<NSUserDefaultsArray> UserDefaults::array(std::string_view key) {
    try {
        const auto object = file_.empty() ? std::nullopt : parseObject(readWholeFile(file_));
        return object ? decodeArray(*object, key) : std::nullopt;
    } catch (const NSError&) {
        logger_.debug("Can't read the preferences.", errorMetadata(std::current_exception()));
        return std::nullopt;
    }
}

void UserDefaults::update(std::string_view key, const Change& change) {
    if (file_.empty()) {
        throw NSError(NSPOSIXErrorDomain, ENOENT,
                      {"There is no place for preferences: neither XDG_CONFIG_HOME nor HOME names a directory."});
    }
    try {
        createDirectories(file_.parent_path());
        const FileLock lock(file_.native() + ".lock", longestLockWait);
        changeLocked(linkTarget(file_), key, change);
    } catch (const fs::filesystem_error& error) {
        throw NSError::posix(error.code().value(), "use", error.path1().native());
    }
}

void UserDefaults::changeLocked(const fs::path& file, std::string_view key, const Change& change) {
    std::optional<JSON> object = parseObject(readWholeFile(file));
    if (!object) {
        const fs::path aside = putAside(file);
        logger_.warning("The preferences can't be understood. They have been put aside, and new ones begin.", [&] {
            return LogMetadata{{"file", file.string()}, {"movedTo", aside.string()}};
        });
        object = JSON::object();
    }
    (*object)[std::string(key)] = encode(change(decodeArray(*object, key)));
    replaceFile(file, object->dump(2, ' ', false, JSON::error_handler_t::replace) + "\n");
}

}  // namespace zorvane
