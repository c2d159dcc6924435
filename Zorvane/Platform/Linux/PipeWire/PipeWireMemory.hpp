// The memory of one of PipeWire's buffers.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "Zorvane/Platform/Linux/PipeWire/PipeWirePlanes.hpp"

struct spa_buffer;
struct spa_data;

namespace zorvane {

/// Maps what isn't in this process's memory yet: files in memory, and buffers of devices. Those are read between two
/// calls to their driver, which sees to it that the processor reads what the device has written.
class PipeWireMemory {
  public:
    explicit PipeWireMemory(const spa_buffer& buffer);
    PipeWireMemory(const PipeWireMemory&) = delete;
    PipeWireMemory& operator=(const PipeWireMemory&) = delete;
    ~PipeWireMemory();

    /// What the producer says now of the pieces' content, read once. None is readable that it calls broken, or that
    /// couldn't be mapped.
    PipeWirePieces pieces() const;
    std::size_t count() const { return pieces_.size(); }

    void beginReading() const;
    void endReading() const;

  private:
    struct Piece {
        const spa_data* data = nullptr;
        void* mapping = nullptr;  // ours to unmap
        std::size_t mappingSize = 0;
        std::span<const std::byte> memory;
    };

    static Piece map(const spa_data& data);
    void synchronize(unsigned long long flags) const;

    std::vector<Piece> pieces_;
};

}  // namespace zorvane
