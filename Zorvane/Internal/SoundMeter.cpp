#include "Zorvane/Internal/SoundMeter.hpp"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>

#include "Zorvane/Platform/CoreMedia/CMClock.hpp"

namespace zorvane {
namespace {

constexpr double windowDuration = 0.1;  // seconds
constexpr double validity = 0.3;        // seconds after which a level says nothing about the present

template <class Sample>
constexpr float fullScale() {
    if constexpr (std::is_integral_v<Sample>) {
        return -static_cast<float>(std::numeric_limits<Sample>::min());
    } else {
        return 1;
    }
}

}  // namespace

template <class Sample>
void SoundMeter::add(Sum& sum, const AVAudioPCMBuffer& pcm) {
    const std::byte* bytes = pcm.bytes().data();
    const std::size_t count = pcm.bytes().size() / sizeof(Sample);
    float peak = sum.peak;
    double squares = 0;
    for (std::size_t index = 0; index < count; ++index) {
        Sample sample;
        std::memcpy(&sample, bytes + index * sizeof(Sample), sizeof(Sample));
        const float value = static_cast<float>(sample) / fullScale<Sample>();
        peak = std::max(peak, std::abs(value));
        squares += static_cast<double>(value) * value;
    }
    sum.peak = peak;
    sum.squares += squares;
    sum.samples += count;
}

void SoundMeter::measure(const CMSampleBuffer& sampleBuffer) {
    const auto& pcm = sampleBuffer.audioBuffer();
    if (!pcm) {
        return;
    }
    switch (pcm->format().commonFormat) {
        case AVAudioCommonFormat::int16:
            add<std::int16_t>(window_, *pcm);
            break;
        case AVAudioCommonFormat::int32:
            add<std::int32_t>(window_, *pcm);
            break;
        case AVAudioCommonFormat::float32:
            add<float>(window_, *pcm);
            break;
    }
    const double samplesPerSecond = pcm->format().sampleRate * pcm->format().channelCount;
    if (static_cast<double>(window_.samples) >= windowDuration * samplesPerSecond) {
        publish();
    }
}

void SoundMeter::publish() {
    const double rms = std::sqrt(window_.squares / static_cast<double>(window_.samples));
    const float peak = std::min(window_.peak, 1.0F);
    peak_.store(peak, std::memory_order_relaxed);
    rms_.store(std::isfinite(rms) ? static_cast<float>(std::min(rms, 1.0)) : peak, std::memory_order_relaxed);
    publishedAt_.store(hostTimeClockTime().seconds(), std::memory_order_relaxed);
    window_ = {};
}

SoundMeter::Level SoundMeter::level() const {
    if (hostTimeClockTime().seconds() - publishedAt_.load(std::memory_order_relaxed) > validity) {
        return {};
    }
    return {peak_.load(std::memory_order_relaxed), rms_.load(std::memory_order_relaxed)};
}

}  // namespace zorvane
