// Cuts a stream of frames into samples of sound.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>

#include "Zorvane/Platform/AVFoundation/AVAudioPCMBufferPool.hpp"
#include "Zorvane/Platform/CoreMedia/CMSampleBuffer.hpp"

namespace zorvane {

/// Frames are counted on the host clock from its beginning, so a frame's number is its time. They are written into
/// pooled buffers of 10 ms, each of which leaves as a sample when it is full: the same few samples a second whatever
/// the size of the source's blocks. Used by one thread at a time.
class SoundBlocks {
  public:
    using Sink = std::function<void(const CMSampleBuffer& sample)>;

    SoundBlocks(const AVAudioFormat& format, Sink sink);

    /// The frame that is written next.
    std::int64_t nextFrame() const { return firstFrame_ + length_; }

    /// Where up to `frames` frames may be written now: at least one, and often fewer than asked. Throws
    /// `std::bad_alloc`.
    std::span<std::byte> room(std::int64_t frames);

    /// That so many have been written there.
    void commit(std::size_t frames);

    /// Goes on at `frame`, which is not before the next one.
    void skipTo(std::int64_t frame);

    /// Hands over what there is of the block under way.
    void flush();

  private:
    const AVAudioFormat format_;
    const std::uint32_t capacity_;
    const std::shared_ptr<const CMFormatDescription> description_;
    const Sink sink_;
    AVAudioPCMBufferPool pool_;
    std::shared_ptr<AVAudioPCMBuffer> buffer_;  // under way; null before its first frame
    std::int64_t firstFrame_ = 0;
    std::uint32_t length_ = 0;
};

}  // namespace zorvane
