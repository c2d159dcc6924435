// Paths and file names as URLs.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace zorvane {

/// Whether a path names a directory; its URL then ends in a slash.
enum class Directory { yes, no };

/// The path as an absolute URL, percent-encoded: "file:///tmp/a%20b/". Reads nothing but, for a relative path, the
/// working directory. Never throws for what the path says; one that can't be made absolute stays as it is.
std::string absoluteURLString(const std::filesystem::path& path, Directory directory);

/// A file's name as a URL relative to its directory, percent-encoded: nothing in it is taken for a path, a scheme, a
/// query or the end of a quotation.
std::string relativeURLString(std::string_view filename);

}  // namespace zorvane
