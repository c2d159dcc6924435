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
    const State now = state();
    if (description_.mediaType != AVMediaType::audio) {
        return {.mediaType = CMMediaType::video,
                .dimensions = now.videoFormat ? now.videoFormat->size : CMVideoDimensions()};
    }
    constexpr std::uint32_t mostChannels = 8;
    const PipeWireNodeFormat& format = now.format;
    AVAudioFormat sound;
    sound.sampleRate = format.rate > 0 ? format.rate : sound.sampleRate;
    sound.channelCount = format.channelCount > 0 ? std::min(format.channelCount, mostChannels) : sound.channelCount;
    return {.mediaType = CMMediaType::audio, .audioFormat = sound};
}

CMTime PipeWireCaptureDevice::activeVideoMinFrameDuration() const {
    const State now = state();
    return now.videoFormat ? now.videoFormat->rate.frameDuration() : kCMTimeInvalid;
}

NSKeyValueObservation PipeWireCaptureDevice::observeSuspended(std::function<void()> handler) {
    return observers_.add(std::move(handler));
}

std::uint64_t PipeWireCaptureDevice::nodeSerial() const {
    return state().nodeSerial;
}

std::optional<PipeWireVideoSource> PipeWireCaptureDevice::videoSource() const {
    const State now = state();
    if (now.outputPort == 0) {
        return std::nullopt;
    }
    return PipeWireVideoSource{.outputPort = now.outputPort, .format = now.videoFormat};
}

std::string PipeWireCaptureDevice::error() const {
    return state().error;
}

bool PipeWireCaptureDevice::isUnreadable() const {
    return state().isUnreadable;
}

void PipeWireCaptureDevice::update(const PipeWireSource& source) {
    const auto videoFormat = chooseVideoFormat(source.videoOffers);
    setState({.presence = source.isCutOff ? Presence::suspended : Presence::connected,
              .nodeSerial = numberOf<std::uint64_t>(source.node, PW_KEY_OBJECT_SERIAL).value_or(0),
              .format = source.format,
              .outputPort = source.outputPort,
              .videoFormat = videoFormat,
              .isUnreadable = !source.videoOffers.empty() && !videoFormat,
              .error = source.error,
              .isUsedByOthers = source.isUsedByOthers});
}

void PipeWireCaptureDevice::setGone() {
    const State before = state();
    setState({.presence = Presence::gone, .format = before.format, .videoFormat = before.videoFormat});
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
