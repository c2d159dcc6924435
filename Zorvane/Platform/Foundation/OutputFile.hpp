// A file that a recording is written to.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <span>

namespace zorvane {

/// A new file that grows at its end. Every operation either does all it says or throws an `NSError`; nothing is kept
/// back in memory. Used by one thread at a time. Destroying it closes it and leaves the file as it is.
class OutputFile {
  public:
    virtual ~OutputFile() = default;

    /// Writes behind the last byte. After an error a part of the bytes may have been written.
    virtual void append(std::span<const std::byte> bytes) = 0;

    /// Writes over what is there.
    virtual void overwrite(std::uint64_t offset, std::span<const std::byte> bytes) = 0;

    /// Cuts the file to its first `size` bytes.
    virtual void truncate(std::uint64_t size) = 0;

    /// Returns when everything written has reached the disk.
    virtual void sync() = 0;

    /// No other call may follow.
    virtual void close() = 0;
};

/// Creates a file that only its owner may read and write: it shows a screen. Throws `NSError`, also when there is such
/// a file already. Errors of the file name its path, and say what the user can do about a full disk.
std::unique_ptr<OutputFile> makeOutputFile(const std::filesystem::path& path);

using OutputFileMaker = std::function<std::unique_ptr<OutputFile>(const std::filesystem::path&)>;

}  // namespace zorvane
