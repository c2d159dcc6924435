// A block of uncompressed sound.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "Zorvane/Platform/AVFoundation/AVAudioFormat.hpp"

namespace zorvane {

/// Interleaved PCM frames of one format. New buffers are silent. Filled by its maker, immutable once it is in a sample.
class AVAudioPCMBuffer {
  public:
    /// Room for `frameCapacity` frames, all zero. Nothing when the format is unusable or memory is short.
    static std::shared_ptr<AVAudioPCMBuffer> make(const AVAudioFormat& format, std::uint32_t frameCapacity);

    const AVAudioFormat& format() const { return format_; }
    std::uint32_t frameCapacity() const { return frameCapacity_; }
    std::uint32_t frameLength() const { return frameLength_; }

    /// How many frames hold sound. `length` is at most `frameCapacity()`.
    void setFrameLength(std::uint32_t length);

    /// The bytes of the first `frameLength()` frames.
    std::span<const std::byte> bytes() const { return {data_.get(), frameLength_ * format_.bytesPerFrame()}; }
    std::span<std::byte> mutableBytes() { return {data_.get(), frameCapacity_ * format_.bytesPerFrame()}; }

  private:
    struct Free {
        void operator()(std::byte* data) const;
    };
    using Data = std::unique_ptr<std::byte[], Free>;

    AVAudioPCMBuffer(const AVAudioFormat& format, std::uint32_t frameCapacity, Data data);

    AVAudioFormat format_;
    std::uint32_t frameCapacity_ = 0;
    std::uint32_t frameLength_ = 0;
    // Zeroed by the system: the silence of an hour costs no memory, but for what is written to it.
    Data data_;
};

}  // namespace zorvane
