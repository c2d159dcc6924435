#include "Zorvane/Platform/Virtual/VirtualSoundSource.hpp"

#include <utility>

namespace zorvane {

using std::chrono::nanoseconds;

namespace {

std::shared_ptr<const CMFormatDescription> soundFormat(const SCStreamConfiguration& configuration) {
    CMFormatDescription format;
    format.mediaType = CMMediaType::audio;
    format.audioFormat = AVAudioFormat{.commonFormat = AVAudioCommonFormat::float32,
                                       .sampleRate = configuration.sampleRate,
                                       .channelCount = configuration.channelCount};
    return std::make_shared<const CMFormatDescription>(format);
}

}  // namespace

VirtualSoundSource::VirtualSoundSource(std::shared_ptr<VirtualDesktop> desktop, SCAudibleProcesses audible,
                                       const SCStreamConfiguration& configuration, Deliver deliver)
    : desktop_(std::move(desktop)),
      audible_(std::move(audible)),
      deliver_(std::move(deliver)),
      format_(soundFormat(configuration)),
      strand_(Executor::makeStrand("zv.virtual.audio")) {}

void VirtualSoundSource::post(std::function<void(VirtualSoundSource&)> job) {
    strand_->post([self = shared_from_this(), job = std::move(job)] { job(*self); });
}

void VirtualSoundSource::start(nanoseconds stampOffset) {
    post([stampOffset](VirtualSoundSource& self) {
        const nanoseconds elapsed = self.desktop_->clock()->now() - self.desktop_->origin();
        self.block_ = (elapsed + VirtualSound::blockDuration - nanoseconds(1)) / VirtualSound::blockDuration;
        self.stampOffset_ = stampOffset;
        self.running_ = true;
        self.waitForBlock();
    });
}

void VirtualSoundSource::stop() {
    post([](VirtualSoundSource& self) {
        self.running_ = false;
        if (self.timer_) {
            self.desktop_->clock()->cancel(*std::exchange(self.timer_, std::nullopt));
        }
    });
}

void VirtualSoundSource::waitForBlock() {
    timer_ = desktop_->clock()->schedule(begin(block_ + 1), nanoseconds::zero(), [weak = weak_from_this()] {
        if (auto self = weak.lock()) {
            self->post([](VirtualSoundSource& source) { source.deliverBlock(); });
        }
    });
}

// In frames. The blocks are whole frames apart, so that all are rounded alike.
CMTime VirtualSoundSource::stampOf(nanoseconds time) const {
    const double seconds = std::chrono::duration<double>(time - stampOffset_).count();
    return CMTime::fromSeconds(seconds, static_cast<std::int32_t>(format_->audioFormat->sampleRate));
}

void VirtualSoundSource::deliverBlock() {
    timer_.reset();
    if (!running_) {
        return;
    }
    const VirtualSound sound = desktop_->withState([](VirtualDesktopState& state) { return state.sound; });
    const nanoseconds heard = begin(block_);
    if (!sound.isInterrupted && !sound.isLost(heard)) {
        CMSampleTimingInfo timing;
        timing.duration = CMTime::make(1, static_cast<std::int32_t>(format_->audioFormat->sampleRate));
        timing.presentationTimeStamp = stampOf(sound.stamp(heard));
        deliver_(CMSampleBuffer::audio(sound.render(block_, *format_->audioFormat, audible_), timing, format_));
    }
    ++block_;
    waitForBlock();
}

}  // namespace zorvane
