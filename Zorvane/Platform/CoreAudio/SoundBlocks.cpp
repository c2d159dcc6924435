#include "Zorvane/Platform/CoreAudio/SoundBlocks.hpp"

#include <algorithm>
#include <utility>

namespace zorvane {
namespace {

std::shared_ptr<const CMFormatDescription> descriptionOf(const AVAudioFormat& format) {
    CMFormatDescription description;
    description.mediaType = CMMediaType::audio;
    description.audioFormat = format;
    return std::make_shared<const CMFormatDescription>(std::move(description));
}

}  // namespace

SoundBlocks::SoundBlocks(const AVAudioFormat& format, Sink sink)
    : format_(format),
      capacity_(std::max(1U, static_cast<std::uint32_t>(format.sampleRate / 100))),
      description_(descriptionOf(format)),
      sink_(std::move(sink)),
      pool_(format, capacity_) {}

std::span<std::byte> SoundBlocks::room(std::int64_t frames) {
    if (!buffer_) {
        buffer_ = pool_.take();
    }
    const auto count = static_cast<std::size_t>(std::min<std::int64_t>(frames, capacity_ - length_));
    return buffer_->mutableBytes().subspan(length_ * format_.bytesPerFrame(), count * format_.bytesPerFrame());
}

void SoundBlocks::commit(std::size_t frames) {
    length_ += static_cast<std::uint32_t>(frames);
    if (length_ == capacity_) {
        flush();
    }
}

void SoundBlocks::skipTo(std::int64_t frame) {
    if (frame != nextFrame()) {
        flush();
        firstFrame_ = frame;
    }
}

void SoundBlocks::flush() {
    if (length_ == 0) {
        return;
    }
    const auto timescale = static_cast<std::int32_t>(format_.sampleRate);
    CMSampleTimingInfo timing;
    timing.duration = CMTime::make(1, timescale);
    timing.presentationTimeStamp = CMTime::make(firstFrame_, timescale);
    buffer_->setFrameLength(length_);
    firstFrame_ = nextFrame();
    length_ = 0;
    sink_(CMSampleBuffer::audio(std::move(buffer_), timing, description_));
}

}  // namespace zorvane
