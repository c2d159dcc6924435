#include "BundleLocation.hpp"

#include <stdexcept>
#include <system_error>

#include <fmt/format.h>

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

}  // namespace

fs::path bundleLocation(const std::optional<fs::path>& output) {
    // A recorder touches nothing before it prepares, so this one serves to name a bundle.
    fs::path location = output ? fs::absolute(*output) : fs::current_path() / ZVRecorder({}).bundleURL().filename();
    location = location.lexically_normal();
    if (!location.has_filename()) {
        location = location.parent_path();
    }
    std::error_code error;
    if (fs::exists(fs::symlink_status(location, error))) {
        throw std::runtime_error(fmt::format(
            "\"{}\" exists already. Choose another directory with -o, or remove this one.", location.string()));
    }
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

}  // namespace zorvane::cli
