// Small files that are read and replaced whole. Failures are `NSError`s of the POSIX domain.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace zorvane {

/// The path that a symbolic link stands for in the end, where there need not be anything; any other path itself. May
/// throw `std::filesystem::filesystem_error`.
std::filesystem::path linkTarget(std::filesystem::path path);

/// The bytes of an ordinary file; nothing if there is no file.
std::optional<std::string> readWholeFile(const std::filesystem::path& path);

/// Puts the bytes in the place of the file at once: whoever reads it, also after a power cut, gets the old ones or all
/// of the new ones. Only its owner may read the new file. Two callers must not replace the same file at a time.
void replaceFile(const std::filesystem::path& path, std::string_view bytes);

/// Moves a file, over one that is there.
void moveFile(const std::filesystem::path& from, const std::filesystem::path& to);

}  // namespace zorvane
