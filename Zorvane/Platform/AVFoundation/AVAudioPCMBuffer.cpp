#include "Zorvane/Platform/AVFoundation/AVAudioPCMBuffer.hpp"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>

namespace zorvane {

std::shared_ptr<AVAudioPCMBuffer> AVAudioPCMBuffer::make(const AVAudioFormat& format, std::uint32_t frameCapacity) {
    if (!(format.sampleRate > 0) || std::isinf(format.sampleRate) || format.channelCount == 0) {
        return nullptr;
    }
    const std::size_t size = std::size_t{frameCapacity} * format.bytesPerFrame();
    Data data(static_cast<std::byte*>(std::calloc(std::max<std::size_t>(size, 1), 1)));
    if (!data) {
        return nullptr;
    }
    return std::shared_ptr<AVAudioPCMBuffer>(new AVAudioPCMBuffer(format, frameCapacity, std::move(data)));
}

AVAudioPCMBuffer::AVAudioPCMBuffer(const AVAudioFormat& format, std::uint32_t frameCapacity, Data data)
    : format_(format), frameCapacity_(frameCapacity), data_(std::move(data)) {}

void AVAudioPCMBuffer::Free::operator()(std::byte* data) const {
    std::free(data);
}

void AVAudioPCMBuffer::setFrameLength(std::uint32_t length) {
    frameLength_ = std::min(length, frameCapacity_);
}

}  // namespace zorvane
