// Where an application's icon lies.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace zorvane {

/// The PNG or SVG file of an icon that a desktop entry names: itself if it is a path, else by name in the theme
/// "hicolor", which all applications install to, in the size that is best to be shown large, and after that in the
/// "pixmaps" folders. Nothing if there is none, or the name leads out of those folders. Any thread; reads folders.
std::optional<std::filesystem::path> findIconFile(const std::string& icon,
                                                  const std::vector<std::filesystem::path>& dataDirectories);

}  // namespace zorvane
