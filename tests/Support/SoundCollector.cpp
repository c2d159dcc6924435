#include "tests/Support/SoundCollector.hpp"

#include <chrono>
#include <cmath>

namespace zorvane {
namespace {

constexpr std::chrono::seconds patience{30};

}  // namespace

void SoundCollector::captureOutput(const AVCaptureDataOutput&, const CMSampleBuffer& sampleBuffer) {
    add(sampleBuffer);
}

void SoundCollector::add(const CMSampleBuffer& sampleBuffer) {
    const std::lock_guard lock(mutex_);
    samples_.push_back(sampleBuffer);
    frames_ += static_cast<std::size_t>(sampleBuffer.numSamples());
    changed_.notify_all();
}

SoundCollector::Samples SoundCollector::samples() const {
    const std::lock_guard lock(mutex_);
    return samples_;
}

std::size_t SoundCollector::count() const {
    const std::lock_guard lock(mutex_);
    return samples_.size();
}

bool SoundCollector::waitForFrames(std::size_t frames) const {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, patience, [&] { return frames_ >= frames; });
}

bool SoundCollector::waitForMoreFrames(std::size_t frames) const {
    std::unique_lock lock(mutex_);
    const std::size_t wanted = frames_ + frames;
    return changed_.wait_for(lock, patience, [&] { return frames_ >= wanted; });
}

std::vector<std::int64_t> breaksIn(const SoundCollector::Samples& samples) {
    std::vector<std::int64_t> breaks;
    for (std::size_t index = 1; index < samples.size(); ++index) {
        const CMSampleBuffer& before = samples[index - 1];
        const CMTime end = before.presentationTimeStamp() + before.duration();
        const CMTime rest = samples[index].presentationTimeStamp() - end;
        if (rest != kCMTimeZero) {
            breaks.push_back(std::llround(rest.seconds() * before.audioBuffer()->format().sampleRate));
        }
    }
    return breaks;
}

void forEachFrame(const SoundCollector::Samples& samples,
                  const std::function<void(double time, const float* channels)>& visit) {
    for (const CMSampleBuffer& sample : samples) {
        const AVAudioPCMBuffer& sound = *sample.audioBuffer();
        const auto* frame = reinterpret_cast<const float*>(sound.bytes().data());
        for (std::uint32_t index = 0; index < sound.frameLength(); ++index, frame += sound.format().channelCount) {
            visit(sample.presentationTimeStamp().seconds() + index / sound.format().sampleRate, frame);
        }
    }
}

double shareOfFrames(const SoundCollector::Samples& samples,
                     const std::function<bool(double time, const float* channels)>& condition) {
    std::size_t all = 0;
    std::size_t fitting = 0;
    forEachFrame(samples, [&](double time, const float* channels) {
        ++all;
        fitting += condition(time, channels);
    });
    return static_cast<double>(fitting) / static_cast<double>(all);
}

}  // namespace zorvane
