#include "Zorvane/Platform/Virtual/VirtualMicrophoneSource.hpp"

#include <cmath>
#include <utility>

#include "Zorvane/Platform/Platform.hpp"

namespace zorvane {
namespace {

using std::chrono::nanoseconds;

constexpr double blocksPerSecond = 100;

double secondsOf(nanoseconds time) {
    return std::chrono::duration<double>(time).count();
}

nanoseconds fromSeconds(double seconds) {
    return nanoseconds(std::llround(seconds * 1e9));
}

}  // namespace

VirtualMicrophoneSource::VirtualMicrophoneSource(std::shared_ptr<VirtualCaptureDevices> devices, std::string deviceID,
                                                 Receiver receiver)
    : VirtualDeviceSource(std::move(devices), std::move(deviceID), std::move(receiver)),
      outputFormat_(this->devices()->microphone(this->deviceID()).format),
      converting_(Platform::current()->audioConverting) {}

void VirtualMicrophoneSource::begin() {
    begin_ = secondsOf(clock().now());
    listenTo(outputFormat_);
    waitForBlock();
}

void VirtualMicrophoneSource::listenTo(const AVAudioFormat& format) {
    sourceFormat_ = format;
    aligner_ = std::make_unique<SoundAligner>(format, outputFormat_, *converting_,
                                              [this](const CMSampleBuffer& sample) { deliver(sample); });
    const auto frames = static_cast<std::size_t>(std::lround(format.sampleRate / blocksPerSecond));
    block_.assign(frames * format.bytesPerFrame(), std::byte(0));
    position_ = 0;
}

double VirtualMicrophoneSource::blockDuration(const VirtualMicrophone& microphone) const {
    const std::size_t frames = block_.size() / sourceFormat_.bytesPerFrame();
    return static_cast<double>(frames) / microphone.trueRate();
}

void VirtualMicrophoneSource::waitForBlock() {
    const VirtualMicrophone microphone = devices()->microphone(deviceID());
    const nanoseconds late = microphone.latency + microphone.jitter * (scatter() % 1000) / 1000;
    wakeAt(fromSeconds(begin_ + blockDuration(microphone)) + late);
}

void VirtualMicrophoneSource::wake() {
    const VirtualMicrophone microphone = devices()->microphone(deviceID());
    const bool isPresent = notePresence();
    if (microphone.format != sourceFormat_) {
        aligner_->restart();
        listenTo(microphone.format);
    }
    if (isPresent && !microphone.isMute && fromSeconds(begin_) >= microphone.lostUntil) {
        handOver(microphone);
    }
    begin_ += blockDuration(microphone);
    position_ += static_cast<std::int64_t>(block_.size() / sourceFormat_.bytesPerFrame());
    waitForBlock();
}

void VirtualMicrophoneSource::lost() {
    aligner_->restart();
}

void VirtualMicrophoneSource::handOver(const VirtualMicrophone& microphone) {
    const double jump = static_cast<double>(microphone.jumpedFrames) / microphone.trueRate();
    microphone.render(begin_ + jump - secondsOf(devices()->origin()), block_);
    const nanoseconds noise = microphone.jitter * (static_cast<std::int64_t>(scatter() % 2000) - 1000) / 2000;
    aligner_->process({.position = position_ + microphone.jumpedFrames,
                       .hostTime = fromSeconds(begin_ + jump) + noise,
                       .frames = block_});
}

}  // namespace zorvane
