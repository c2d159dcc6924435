#include "Zorvane/Platform/Linux/System/IconFiles.hpp"

#include <array>
#include <string_view>

namespace zorvane {
namespace {

namespace fs = std::filesystem;

constexpr std::array<std::string_view, 2> extensions{".png", ".svg"};

bool isImage(const fs::path& path) {
    std::error_code error;
    return (path.extension() == extensions[0] || path.extension() == extensions[1]) && fs::is_regular_file(path, error);
}

/// Some entries name a file with its extension.
std::optional<fs::path> inFolder(const fs::path& folder, const std::string& name) {
    for (const std::string_view extension : extensions) {
        auto path = folder / name;
        path += extension;
        if (isImage(path)) {
            return path;
        }
    }
    return isImage(folder / name) ? std::optional(folder / name) : std::nullopt;
}

}  // namespace

std::optional<fs::path> findIconFile(const std::string& icon, const std::vector<fs::path>& dataDirectories) {
    if (fs::path(icon).is_absolute()) {
        return isImage(icon) ? std::optional(fs::path(icon)) : std::nullopt;
    }
    if (icon.empty() || icon.find('/') != icon.npos) {
        return std::nullopt;
    }
    constexpr std::array sizes{"256x256", "192x192", "128x128", "96x96", "scalable", "512x512",
                               "72x72",   "64x64",   "48x48",   "32x32", "24x24",    "16x16"};
    for (const char* size : sizes) {
        for (const fs::path& directory : dataDirectories) {
            if (auto path = inFolder(directory / "icons/hicolor" / size / "apps", icon)) {
                return path;
            }
        }
    }
    for (const fs::path& directory : dataDirectories) {
        if (auto path = inFolder(directory / "pixmaps", icon)) {
            return path;
        }
    }
    return std::nullopt;
}

}  // namespace zorvane
