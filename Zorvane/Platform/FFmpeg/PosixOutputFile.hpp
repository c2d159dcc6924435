// A movie's file in the file system.
#pragma once

#include "Zorvane/Platform/FFmpeg/OutputFile.hpp"

namespace zorvane {

/// Creates a file that only its owner may read and write: it shows a screen. Throws `NSError`, also when there is such
/// a file already. Errors of the file name its path, and say what the user can do about a full disk.
std::unique_ptr<OutputFile> makePosixOutputFile(const std::filesystem::path& path);

}  // namespace zorvane
