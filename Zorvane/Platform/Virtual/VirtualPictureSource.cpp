#include "Zorvane/Platform/Virtual/VirtualPictureSource.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

namespace zorvane {

using std::chrono::nanoseconds;

namespace {

constexpr nanoseconds backwardStep = std::chrono::milliseconds(10);
constexpr auto unknownOutputType = static_cast<SCStreamOutputType>(0xFF);

nanoseconds interval(const SCStreamConfiguration& configuration) {
    const CMTime& time = configuration.minimumFrameInterval;
    return time.isNumeric() ? nanoseconds(std::llround(time.seconds() * 1e9)) : nanoseconds::zero();
}

CMSampleAttachments attachments(SCFrameStatus status) {
    return {.frameStatus = static_cast<std::int32_t>(status)};
}

}  // namespace

VirtualPictureSource::VirtualPictureSource(std::shared_ptr<VirtualDesktop> desktop, SCContentFilter filter,
                                           SCStreamConfiguration configuration, Deliver deliver)
    : desktop_(std::move(desktop)),
      filter_(std::move(filter)),
      configuration_(std::move(configuration)),
      frameInterval_(interval(configuration_)),
      deliver_(std::move(deliver)),
      strand_(Executor::makeStrand("zv.virtual.screen")) {}

void VirtualPictureSource::post(std::function<void(VirtualPictureSource&)> job) {
    strand_->post([self = shared_from_this(), job = std::move(job)] { job(*self); });
}

void VirtualPictureSource::start(nanoseconds stampOffset) {
    changed_ = true;
    post([stampOffset](VirtualPictureSource& self) {
        self.stampOffset_ = stampOffset;
        self.lastPicture_ = self.desktop_->clock()->now() - self.frameInterval_;
        self.pool_ = CVPixelBufferPool::make(self.layout(), self.configuration_.queueDepth);
        self.running_ = true;
        self.proceed();
    });
}

void VirtualPictureSource::stop() {
    post([](VirtualPictureSource& self) {
        self.running_ = false;
        if (self.timer_) {
            self.desktop_->clock()->cancel(*std::exchange(self.timer_, std::nullopt));
        }
    });
}

void VirtualPictureSource::pictureChanged() {
    if (!changed_.exchange(true)) {
        post([](VirtualPictureSource& self) { self.proceed(); });
    }
}

void VirtualPictureSource::deliverOdd(VirtualOddSample kind) {
    post([kind](VirtualPictureSource& self) { self.odd(kind); });
}

void VirtualPictureSource::proceed() {
    if (!running_ || timer_) {
        return;
    }
    if (!changed_) {
        if (!std::exchange(saidIdle_, true)) {
            notice(SCFrameStatus::idle);
        }
        return;
    }
    const nanoseconds held = desktop_->withState([this](VirtualDesktopState& state) {
        const auto entry = state.conditions.picturesHeldUntil.find(filter_.display.displayID);
        return entry == state.conditions.picturesHeldUntil.end() ? nanoseconds::zero() : entry->second;
    });
    const nanoseconds now = desktop_->clock()->now();
    const nanoseconds due = std::max(lastPicture_ + frameInterval_, held);
    if (now >= due) {
        showPicture(now);
        wakeAt(now + frameInterval_);
    } else {
        wakeAt(due);
    }
}

void VirtualPictureSource::wakeAt(nanoseconds hostTime) {
    timer_ = desktop_->clock()->schedule(hostTime, nanoseconds::zero(), [weak = weak_from_this()] {
        if (auto self = weak.lock()) {
            self->post([](VirtualPictureSource& source) {
                source.timer_.reset();
                source.proceed();
            });
        }
    });
}

void VirtualPictureSource::showPicture(nanoseconds now) {
    CVPixelBufferRef picture = pool_->take();
    if (!picture) {
        return;  // the change waits
    }
    changed_ = false;
    if (!draw(*picture)) {
        return;
    }
    saidIdle_ = false;
    lastPicture_ = now;
    const CMSampleTimingInfo timing{.presentationTimeStamp = stamp(now)};
    deliver_(CMSampleBuffer::video(std::move(picture), timing, attachments(SCFrameStatus::complete)),
             SCStreamOutputType::screen);
}

void VirtualPictureSource::notice(SCFrameStatus status) {
    const CMSampleTimingInfo timing{.presentationTimeStamp = stamp(desktop_->clock()->now())};
    deliver_(CMSampleBuffer::notice(timing, attachments(status)), SCStreamOutputType::screen);
}

void VirtualPictureSource::odd(VirtualOddSample kind) {
    if (!running_) {
        return;
    }
    const auto picture = [this](nanoseconds hostTime, const CMSampleAttachments& attached) {
        CVPixelBufferRef image = pool_->take();
        if (image) {
            draw(*image);
        }
        return CMSampleBuffer::video(std::move(image), {.presentationTimeStamp = stamp(hostTime)}, attached);
    };
    const CMSampleAttachments complete = attachments(SCFrameStatus::complete);
    const nanoseconds now = desktop_->clock()->now();
    switch (kind) {
        case VirtualOddSample::idle:
            return notice(SCFrameStatus::idle);
        case VirtualOddSample::blank:
            return notice(SCFrameStatus::blank);
        case VirtualOddSample::withoutStatus:
            return deliver_(picture(now, {}), SCStreamOutputType::screen);
        case VirtualOddSample::invalid:
            return deliver_(CMSampleBuffer(), SCStreamOutputType::screen);
        case VirtualOddSample::repeatedTime:
            return deliver_(picture(lastPicture_, complete), SCStreamOutputType::screen);
        case VirtualOddSample::backwardTime:
            return deliver_(picture(lastPicture_ - backwardStep, complete), SCStreamOutputType::screen);
        case VirtualOddSample::unknownType:
            return deliver_(picture(now, complete), unknownOutputType);
    }
}

// False when the display is gone, or has lost its wide colours.
bool VirtualPictureSource::draw(CVPixelBuffer& picture) {
    return desktop_->withState([&](VirtualDesktopState& state) {
        const VirtualScene::Panel* panel = state.scene.find(filter_.display.displayID);
        const bool canDraw = panel && panel->screen.has(picture.layout().format);
        if (canDraw) {
            state.scene.draw(*panel, filter_, configuration_, picture);
        }
        return canDraw;
    });
}

// A display without wide colour gives what it has, whatever was asked for.
CVPixelLayout VirtualPictureSource::layout() const {
    const bool isWide = desktop_->withState([this](VirtualDesktopState& state) {
        const VirtualScene::Panel* panel = state.scene.find(filter_.display.displayID);
        return configuration_.pixelFormat == CVPixelFormat::l10r && panel && panel->screen.has(CVPixelFormat::l10r);
    });
    CVPixelLayout layout;
    layout.width = configuration_.width;
    layout.height = configuration_.height;
    layout.bytesPerRow = static_cast<std::size_t>(configuration_.width) * sizeof(std::uint32_t);
    layout.format = isWide ? CVPixelFormat::l10r : CVPixelFormat::bgra;
    layout.colorSpace = isWide ? CGColorSpaceName::displayP3 : CGColorSpaceName::sRGB;
    return layout;
}

CMTime VirtualPictureSource::stamp(nanoseconds hostTime) const {
    return CMTime::make((hostTime - stampOffset_).count(), 1'000'000'000);
}

}  // namespace zorvane
