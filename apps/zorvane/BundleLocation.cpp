#include "BundleLocation.hpp"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <system_error>

#include <fmt/format.h>

#include "UserError.hpp"
#include "Zorvane/ZVRecorder.hpp"

namespace zorvane::cli {
namespace {

namespace fs = std::filesystem;

/// Calls `visit(name, size)` for each file. A bundle that is being written may change at any moment.
template <class Visit>
void forEachFile(const fs::path& bundle, Visit visit) {
    std::error_code error;
    for (fs::directory_iterator entry(bundle, error), end; !error && entry != end; entry.increment(error)) {
        std::error_code unknown;
        const auto size = entry->file_size(unknown);
        if (!unknown) {
            visit(entry->path().filename(), size);
        }
    }
}

/// The error number of what keeps a directory from being made there, or 0.
int obstacleIn(const fs::path& parent) {
    std::error_code error;
    if (!fs::is_directory(parent, error)) {
        return error ? error.value() : ENOTDIR;
    }
    return access(parent.c_str(), W_OK | X_OK) == 0 ? 0 : errno;
}

/// The nearest directory above that exists is where the bundle's directories have to be made.
void requireWritableParent(const fs::path& location) {
    std::error_code error;
    fs::path parent = location.parent_path();
    while (parent.has_relative_path() && !fs::exists(parent, error)) {
        parent = parent.parent_path();
    }
    if (const int obstacle = obstacleIn(parent)) {
        const std::string reason = std::generic_category().message(obstacle);
        throw userError(fmt::format("Can't make a directory in \"{}\": {}. Choose another place with -o.",
                                    parent.string(), reason));
    }
}

}  // namespace

fs::path bundleLocation(const std::optional<fs::path>& output) {
    if (output && output->empty()) {
        throw userError("The directory after -o has no name. Give one, such as -o talk.zorvane.");
    }
    std::error_code error;
    // A recorder touches nothing before it prepares, so these serve to name a bundle.
    const fs::path named = output ? *output : fs::current_path(error) / ZVRecorder({}).bundleURL().filename();
    fs::path location = ZVRecorder({}, named).bundleURL();
    if (fs::exists(fs::symlink_status(location, error))) {
        throw userError(fmt::format("\"{}\" exists already. Choose another directory with -o, or remove this one.",
                                    location.string()));
    }
    requireWritableParent(location);
    return location;
}

std::uintmax_t bundleSize(const fs::path& bundle) {
    std::uintmax_t total = 0;
    forEachFile(bundle, [&](const fs::path&, std::uintmax_t size) { total += size; });
    return total;
}

bool holdsMedia(const fs::path& bundle) {
    bool found = false;
    forEachFile(bundle,
                [&](const fs::path& name, std::uintmax_t size) { found |= size > 0 && name != "zorvane.json"; });
    return found;
}

std::vector<std::string> unlistedMedia(const fs::path& bundle, const ZVBundleInfo& manifest) {
    std::vector<std::string> names;
    forEachFile(bundle, [&](const fs::path& name, std::uintmax_t size) {
        const bool isMedia = name.extension() == ".mov" || name.extension() == ".m4a";
        const bool isListed = std::ranges::any_of(
            manifest.files, [&](const ZVBundleInfo::FileAsset& file) { return file.filename == name; });
        if (isMedia && size > 0 && !isListed) {
            names.push_back(name.string());
        }
    });
    std::ranges::sort(names);
    return names;
}

}  // namespace zorvane::cli
