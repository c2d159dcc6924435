// Pictures on their way from PipeWire's thread to the one that converts them, and their buffers on the way back.
#pragma once

#include <array>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "Zorvane/Internal/Concurrency/ThreadSafety.hpp"
#include "Zorvane/Platform/Linux/PipeWire/FileDescriptor.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireVideoFormat.hpp"

struct pw_buffer;

namespace zorvane {

class PipeWireMemory;

/// A picture in PipeWire's memory.
struct PipeWirePicture {
    pw_buffer* buffer = nullptr;
    const PipeWireMemory* memory = nullptr;
    PipeWireVideoFormat format;
    std::chrono::nanoseconds time{0};
};

/// A buffer is in one of four places: at the server, waiting here, with the converting thread, or on its way back. All
/// but `take`, `finish` and `end` come on the session's thread. Nothing allocates, and no lock is held but for moments,
/// except while the server takes its buffers away in the middle of a conversion.
class PipeWirePictureExchange {
  public:
    /// Throws `NSError` if the process has no descriptor left.
    PipeWirePictureExchange();

    /// From here on so many pictures may wait. None does now.
    void setCapacity(std::size_t capacity);
    /// Puts a picture behind those that wait. If that is one too many, the oldest one's buffer goes back undelivered.
    void put(const PipeWirePicture& picture);
    /// The buffers that are on their way back, which are now the caller's. `signal` is raised when there are some.
    using Buffers = std::array<pw_buffer*, 64>;
    std::span<pw_buffer*> takeBack(Buffers& buffers);
    const FileDescriptor& signal() const { return signal_; }
    /// Forgets all buffers, which are going away. Waits for a picture that is being converted.
    void withdraw();
    /// How many pictures went back undelivered since this was asked last.
    std::uint64_t takeDropCount();

    /// The oldest picture that waits; waits for one. Nothing after the end. The converting thread finishes one before
    /// it takes the next.
    std::optional<PipeWirePicture> take();
    void finish();
    /// Wakes `take`. Any thread.
    void end();

  private:
    static constexpr std::size_t most = 16;  // that wait; there are hardly ever so many buffers

    void giveBack(pw_buffer* buffer) ZV_REQUIRES(mutex_);

    const FileDescriptor signal_;
    Mutex mutex_;
    std::condition_variable_any changed_;
    std::array<PipeWirePicture, most> waiting_ ZV_GUARDED_BY(mutex_);
    std::size_t waitingCount_ ZV_GUARDED_BY(mutex_) = 0;
    std::size_t capacity_ ZV_GUARDED_BY(mutex_) = 1;
    pw_buffer* inHand_ ZV_GUARDED_BY(mutex_) = nullptr;
    Buffers returning_ ZV_GUARDED_BY(mutex_){};
    std::size_t returningCount_ ZV_GUARDED_BY(mutex_) = 0;
    std::uint64_t dropCount_ ZV_GUARDED_BY(mutex_) = 0;
    bool isEnded_ ZV_GUARDED_BY(mutex_) = false;
};

}  // namespace zorvane
