// Which names in a bundle are taken.
#pragma once

#include <filesystem>
#include <set>

#include "Zorvane/Internal/Concurrency/ThreadSafety.hpp"

namespace zorvane {

/// The names that the sources of one recording write to, each of them one source's. Any thread.
class OutputNames {
  public:
    /// Takes the name of a file, or the prefix of a stream's files. Throws a `ZVError` (invalid configuration) if
    /// another source has it, or if its directory doesn't exist.
    void claim(const std::filesystem::path& url);

  private:
    Mutex mutex_;
    std::set<std::filesystem::path> claimed_ ZV_GUARDED_BY(mutex_);
};

}  // namespace zorvane
