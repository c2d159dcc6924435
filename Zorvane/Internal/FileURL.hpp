// Paths as file URLs, for log metadata.
#pragma once

#include <filesystem>
#include <string>

namespace zorvane {

/// Whether a path names a directory; its URL then ends in a slash.
enum class Directory { yes, no };

/// The path as an absolute URL, percent-encoded: "file:///tmp/a%20b/". Reads nothing but, for a relative path, the
/// working directory. Never throws for what the path says; one that can't be made absolute stays as it is.
std::string absoluteURLString(const std::filesystem::path& path, Directory directory);

}  // namespace zorvane
