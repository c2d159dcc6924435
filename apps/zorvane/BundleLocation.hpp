// Where a recording's bundle goes.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "Zorvane/ZVBundleInfo.hpp"

namespace zorvane::cli {

/// The directory that the user asked for; or else, as the user expects of a program, one in the current directory, and
/// not in the temporary one, under the name that the library would give it. Throws a `std::exception` with a text for
/// the user if something is there already or nothing can be made there.
std::filesystem::path bundleLocation(const std::optional<std::filesystem::path>& output);

/// The bytes of all files in a bundle.
std::uintmax_t bundleSize(const std::filesystem::path& bundle);

/// Whether a file in a bundle holds anything, listed in its manifest or not.
bool holdsMedia(const std::filesystem::path& bundle);

/// The names, in order, of the media files in a bundle that its manifest doesn't list. They could not be closed, and
/// play up to where they were cut off.
std::vector<std::string> unlistedMedia(const std::filesystem::path& bundle, const ZVBundleInfo& manifest);

}  // namespace zorvane::cli
