// Blocks of sound that are used again, so that a stream of sound allocates nothing.
#pragma once

#include <cstdint>
#include <memory>

#include "Zorvane/Platform/AVFoundation/AVAudioPCMBuffer.hpp"

namespace zorvane {

/// Buffers of one format and capacity. There are as many as were ever out at the same time; until one more is needed,
/// taking and giving back allocate nothing. Any thread.
class AVAudioPCMBufferPool {
  public:
    AVAudioPCMBufferPool(const AVAudioFormat& format, std::uint32_t frameCapacity);

    /// A buffer with undefined content and length. The release of its last owner gives it back, on whatever thread and
    /// even if the pool is gone. Throws `std::bad_alloc`, also when the format is unusable.
    std::shared_ptr<AVAudioPCMBuffer> take();

  private:
    class Store;
    struct GiveBack;
    template <class T>
    class CountAllocator;

    std::shared_ptr<Store> store_;
};

}  // namespace zorvane
