#include "Zorvane/Platform/Linux/PipeWire/PipeWireCaptureDevice.hpp"

#include <pipewire/keys.h>

#include <algorithm>
#include <utility>

namespace zorvane {

bool PipeWireCaptureDevice::isConnected() const {
    return state().presence != Presence::gone;
}

bool PipeWireCaptureDevice::isSuspended() const {
    return state().presence == Presence::suspended;
}

bool PipeWireCaptureDevice::isInUseByAnotherApplication() const {
    return state().isUsedByOthers;
}

CMFormatDescription PipeWireCaptureDevice::activeFormat() const {
    if (description_.mediaType != AVMediaType::audio) {
        return {};
    }
    constexpr std::uint32_t mostChannels = 8;
    const PipeWireNodeFormat format = state().format;
    AVAudioFormat sound;
    sound.sampleRate = format.rate > 0 ? format.rate : sound.sampleRate;
    sound.channelCount = format.channelCount > 0 ? std::min(format.channelCount, mostChannels) : sound.channelCount;
    return {.mediaType = CMMediaType::audio, .audioFormat = sound};
}

NSKeyValueObservation PipeWireCaptureDevice::observeSuspended(std::function<void()> handler) {
    return observers_.add(std::move(handler));
}

std::uint64_t PipeWireCaptureDevice::nodeSerial() const {
    return state().nodeSerial;
}

void PipeWireCaptureDevice::update(const PipeWireSource& source) {
    setState({.presence = source.isCutOff ? Presence::suspended : Presence::connected,
              .nodeSerial = numberOf<std::uint64_t>(source.node, PW_KEY_OBJECT_SERIAL).value_or(0),
              .format = source.format,
              .isUsedByOthers = source.isUsedByOthers});
}

void PipeWireCaptureDevice::setGone() {
    setState({.presence = Presence::gone, .format = state().format});
}

void PipeWireCaptureDevice::setState(const State& now) {
    const bool wasSuspended = isSuspended();
    {
        const MutexLock lock(mutex_);
        state_ = now;
    }
    if (wasSuspended != (now.presence == Presence::suspended)) {
        observers_.notify();
    }
}

PipeWireCaptureDevice::State PipeWireCaptureDevice::state() const {
    const MutexLock lock(mutex_);
    return state_;
}

}  // namespace zorvane
