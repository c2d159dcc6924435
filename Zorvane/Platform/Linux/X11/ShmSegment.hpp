// Memory that this process and the X server share.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace zorvane {

class XConnection;

/// Zeroed memory, whose pages are taken when they are first written, with a name for the server. The memory lives as
/// long as the object; the server lets go of it when the connection ends.
class ShmSegment {
  public:
    /// Null if the server can't share memory with this process: it lacks MIT-SHM 1.2, or runs on another machine.
    static std::shared_ptr<ShmSegment> make(XConnection& connection, std::size_t size);

    ShmSegment(const ShmSegment&) = delete;
    ShmSegment& operator=(const ShmSegment&) = delete;
    ~ShmSegment();

    std::byte* bytes() const { return bytes_; }
    std::uint32_t name() const { return name_; }

  private:
    ShmSegment(std::byte* bytes, std::size_t size) : bytes_(bytes), size_(size) {}

    std::byte* bytes_;
    std::size_t size_;
    std::uint32_t name_ = 0;
};

}  // namespace zorvane
