// Files and directories that only their owner may read. Failures are `NSError`s of the POSIX domain.
#pragma once

#include <filesystem>
#include <string_view>

namespace zorvane {

/// Makes one directory, whose parent exists. False if there is something at the path already.
[[nodiscard]] bool createPrivateDirectory(const std::filesystem::path& path);

/// Writes the bytes straight to the path, over a file that is there, and brings them to the disk. Blocks for it.
void writePrivateFile(const std::filesystem::path& path, std::string_view bytes);

/// Puts the bytes in the place of the file at once: whoever opens it gets what was there before or all of the new
/// bytes. They reach the disk in the system's own time. Two callers must not replace the same file at a time.
void replacePrivateFile(const std::filesystem::path& path, std::string_view bytes);

}  // namespace zorvane
