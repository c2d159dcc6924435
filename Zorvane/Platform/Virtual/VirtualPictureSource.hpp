// The pictures of one virtual stream: when one is due, and what is on it.
#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>

#include "Zorvane/Internal/Concurrency/Executor.hpp"
#include "Zorvane/Platform/Virtual/VirtualDesktop.hpp"

namespace zorvane {

/// Follows a display and delivers pictures of it:
///
/// - A change is shown at once, but no sooner than `minimumFrameInterval` after the picture before; what changes
///   meanwhile is gathered into one picture. If no change comes in that time, one `idle` notice says so, and nothing
///   more happens until the next change: a still display has no timer and no thread awake.
/// - Pictures come from a pool of `queueDepth`. While all are out, the change waits for the next interval.
///
/// All work is done on a strand of its own. Any thread may call; nothing blocks.
class VirtualPictureSource final : public std::enable_shared_from_this<VirtualPictureSource> {
  public:
    /// Receives each sample on the strand, which waits for it to return.
    using Deliver = std::function<void(const CMSampleBuffer& sample, SCStreamOutputType type)>;

    VirtualPictureSource(std::shared_ptr<VirtualDesktop> desktop, SCContentFilter filter,
                         SCStreamConfiguration configuration, Deliver deliver);

    /// `stampOffset` is what is taken from the host time to get a stamp. The first picture shows what is there.
    void start(std::chrono::nanoseconds stampOffset);
    void stop();
    void pictureChanged();
    void deliverOdd(VirtualOddSample kind);

    const std::shared_ptr<Executor>& strand() const { return strand_; }

  private:
    void post(std::function<void(VirtualPictureSource&)> job);

    // On the strand:
    void proceed();
    void wakeAt(std::chrono::nanoseconds hostTime);
    void showPicture(std::chrono::nanoseconds now);
    void notice(SCFrameStatus status);
    void odd(VirtualOddSample kind);
    bool draw(CVPixelBuffer& picture);
    CVPixelLayout layout() const;
    CMTime stamp(std::chrono::nanoseconds hostTime) const;

    const std::shared_ptr<VirtualDesktop> desktop_;
    const SCContentFilter filter_;
    const SCStreamConfiguration configuration_;
    const std::chrono::nanoseconds frameInterval_;
    const Deliver deliver_;
    const std::shared_ptr<Executor> strand_;
    std::atomic<bool> changed_{false};  // set by anybody, cleared on the strand

    // Of the strand:
    std::shared_ptr<CVPixelBufferPool> pool_;
    std::chrono::nanoseconds stampOffset_{0};
    std::chrono::nanoseconds lastPicture_{0};
    std::optional<HostClock::TimerID> timer_;
    bool running_ = false;
    bool saidIdle_ = true;
};

}  // namespace zorvane
