#include "Zorvane/Platform/Virtual/VirtualMicrophoneSource.hpp"

#include <cmath>
#include <utility>

#include "Zorvane/Platform/AVFoundation/AVError.hpp"
#include "Zorvane/Platform/Foundation/NSError.hpp"
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

std::exception_ptr disconnection() {
    return std::make_exception_ptr(NSError(AVFoundationErrorDomain, AVErrorDeviceWasDisconnected,
                                           {.localizedDescription = "The microphone was unplugged."}));
}

}  // namespace

VirtualMicrophoneSource::VirtualMicrophoneSource(std::shared_ptr<VirtualCaptureDevices> devices, std::string deviceID,
                                                 Receiver receiver)
    : devices_(std::move(devices)),
      deviceID_(std::move(deviceID)),
      receiver_(std::move(receiver)),
      outputFormat_(devices_->microphone(deviceID_).format),
      clock_(devices_->clock()),
      converting_(Platform::current()->audioConverting),
      strand_(Executor::makeStrand("zv.virtual.microphone")) {}

VirtualMicrophoneSource::~VirtualMicrophoneSource() = default;

void VirtualMicrophoneSource::post(std::function<void(VirtualMicrophoneSource&)> job) {
    strand_->post([self = shared_from_this(), job = std::move(job)] { job(*self); });
}

void VirtualMicrophoneSource::start() {
    post([](VirtualMicrophoneSource& self) {
        self.running_ = true;
        self.begin_ = secondsOf(self.clock_->now());
        self.listenTo(self.outputFormat_);
        self.waitForBlock();
    });
}

void VirtualMicrophoneSource::stop() {
    post([](VirtualMicrophoneSource& self) {
        self.running_ = false;
        if (self.timer_) {
            self.clock_->cancel(*std::exchange(self.timer_, std::nullopt));
        }
    });
}

void VirtualMicrophoneSource::listenTo(const AVAudioFormat& format) {
    sourceFormat_ = format;
    aligner_ = std::make_unique<SoundAligner>(format, outputFormat_, *converting_, receiver_.deliver);
    const auto frames = static_cast<std::size_t>(std::lround(format.sampleRate / blocksPerSecond));
    block_.assign(frames * format.bytesPerFrame(), std::byte(0));
    position_ = 0;
}

double VirtualMicrophoneSource::blockDuration(const VirtualMicrophone& microphone) const {
    const std::size_t frames = block_.size() / sourceFormat_.bytesPerFrame();
    return static_cast<double>(frames) / microphone.trueRate();
}

void VirtualMicrophoneSource::waitForBlock() {
    const VirtualMicrophone microphone = devices_->microphone(deviceID_);
    const nanoseconds late = microphone.latency + microphone.jitter * (scatter() % 1000) / 1000;
    const nanoseconds end = fromSeconds(begin_ + blockDuration(microphone)) + late;
    timer_ = clock_->schedule(end, nanoseconds::zero(), [weak = weak_from_this()] {
        if (auto self = weak.lock()) {
            self->post([](VirtualMicrophoneSource& source) { source.endBlock(); });
        }
    });
}

void VirtualMicrophoneSource::endBlock() {
    timer_.reset();
    if (!running_) {
        return;
    }
    const VirtualMicrophone microphone = devices_->microphone(deviceID_);
    notePresence(devices_->isPresent(deviceID_));
    if (microphone.format != sourceFormat_) {
        aligner_->restart();
        listenTo(microphone.format);
    }
    if (isPresent_ && !microphone.isMute && fromSeconds(begin_) >= microphone.lostUntil) {
        handOver(microphone);
    }
    begin_ += blockDuration(microphone);
    position_ += static_cast<std::int64_t>(block_.size() / sourceFormat_.bytesPerFrame());
    waitForBlock();
}

void VirtualMicrophoneSource::handOver(const VirtualMicrophone& microphone) {
    const double jump = static_cast<double>(microphone.jumpedFrames) / microphone.trueRate();
    microphone.render(begin_ + jump - secondsOf(devices_->origin()), block_);
    const nanoseconds noise = microphone.jitter * (static_cast<std::int64_t>(scatter() % 2000) - 1000) / 2000;
    aligner_->process({.position = position_ + microphone.jumpedFrames,
                       .hostTime = fromSeconds(begin_ + jump) + noise,
                       .frames = block_});
}

void VirtualMicrophoneSource::notePresence(bool isPresent) {
    if (std::exchange(isPresent_, isPresent) == isPresent) {
        return;
    }
    if (!isPresent) {
        aligner_->restart();
    }
    receiver_.interrupt(isPresent ? nullptr : disconnection());
}

// The same numbers in every run.
std::uint32_t VirtualMicrophoneSource::scatter() {
    random_ = random_ * 1664525 + 1013904223;
    return random_ >> 8U;
}

}  // namespace zorvane
