// A lock between processes.
#pragma once

#include <chrono>
#include <filesystem>

namespace zorvane {

/// Holds a lock file, which it makes if there is none and leaves in place. The lock goes with the object, and with the
/// process. Threads of one process exclude each other too.
class FileLock {
  public:
    /// Blocks while somebody else holds the lock, for `longestWait` at most. Throws an `NSError` then, or if the file
    /// can't be locked at all.
    FileLock(const std::filesystem::path& path, std::chrono::milliseconds longestWait);
    ~FileLock();
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

  private:
    int descriptor_;
};

}  // namespace zorvane
