#include "Zorvane/Platform/CoreVideo/ClockDisplayLink.hpp"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <mutex>
#include <optional>

#include "Zorvane/Internal/Concurrency/Executor.hpp"
#include "Zorvane/Platform/CoreVideo/RefreshInterval.hpp"

namespace zorvane {
namespace {

using std::chrono::nanoseconds;

/// What the link and its timer share.
class Ticker : public std::enable_shared_from_this<Ticker> {
  public:
    Ticker(std::shared_ptr<HostClock> clock, std::shared_ptr<CGDisplays> displays, CGDirectDisplayID displayID)
        : clock_(std::move(clock)), displays_(std::move(displays)), displayID_(displayID) {}

    CVReturn setHandler(CVDisplayLink::OutputHandler handler) {
        const std::lock_guard lock(calling_);
        if (isRunning_) {
            return kCVReturnDisplayLinkAlreadyRunning;
        }
        handler_ = std::move(handler);
        return kCVReturnSuccess;
    }

    CVReturn setDisplay(CGDirectDisplayID displayID) {
        if (!displays_->properties(displayID)) {
            return kCVReturnInvalidDisplay;
        }
        displayID_ = displayID;
        return kCVReturnSuccess;
    }
    CGDirectDisplayID display() const { return displayID_; }

    CVReturn start() {
        const std::lock_guard lock(calling_);
        if (!handler_) {
            return kCVReturnDisplayLinkCallbacksNotSet;
        }
        if (std::exchange(isRunning_, true)) {
            return kCVReturnDisplayLinkAlreadyRunning;
        }
        due_ = clock_->now();
        postRefresh(run_);
        return kCVReturnSuccess;
    }

    CVReturn stop() {
        const PoolBlockingScope blocking;
        const std::lock_guard lock(calling_);
        if (!std::exchange(isRunning_, false)) {
            return kCVReturnDisplayLinkNotRunning;
        }
        ++run_;
        if (timer_) {
            clock_->cancel(*std::exchange(timer_, std::nullopt));
        }
        return kCVReturnSuccess;
    }

  private:
    void postRefresh(std::uint64_t run) {
        strand_->post([self = shared_from_this(), run] { self->refresh(run); });
    }

    void refresh(std::uint64_t run) {
        const std::lock_guard lock(calling_);
        if (run != run_) {
            return;  // stopped meanwhile
        }
        handler_();
        if (run == run_) {
            scheduleNext();
        }
    }

    void scheduleNext() {
        due_ = std::max(due_ + refreshInterval(*displays_, displayID_), clock_->now());
        timer_ = clock_->schedule(due_, nanoseconds::zero(), [weak = weak_from_this(), run = run_] {
            if (const auto self = weak.lock()) {
                self->postRefresh(run);
            }
        });
    }

    const std::shared_ptr<HostClock> clock_;
    const std::shared_ptr<CGDisplays> displays_;
    const std::shared_ptr<Executor> strand_ = Executor::makeStrand("zv.displaylink");
    std::atomic<CGDirectDisplayID> displayID_;

    std::recursive_mutex calling_;  // held during a call, which may stop the link; guards all below
    CVDisplayLink::OutputHandler handler_;
    bool isRunning_ = false;
    std::uint64_t run_ = 0;  // how often it was stopped
    nanoseconds due_{0};
    std::optional<HostClock::TimerID> timer_;
};

class ClockDisplayLink final : public CVDisplayLink {
  public:
    explicit ClockDisplayLink(std::shared_ptr<Ticker> ticker) : ticker_(std::move(ticker)) {}
    ~ClockDisplayLink() override { ticker_->stop(); }
    ClockDisplayLink(const ClockDisplayLink&) = delete;
    ClockDisplayLink& operator=(const ClockDisplayLink&) = delete;

    CVReturn setOutputHandler(OutputHandler handler) override { return ticker_->setHandler(std::move(handler)); }
    CVReturn setCurrentCGDisplay(CGDirectDisplayID displayID) override { return ticker_->setDisplay(displayID); }
    CGDirectDisplayID currentCGDisplay() const override { return ticker_->display(); }
    CVReturn start() override { return ticker_->start(); }
    CVReturn stop() override { return ticker_->stop(); }

  private:
    const std::shared_ptr<Ticker> ticker_;
};

}  // namespace

CVDisplayLinks::Created ClockDisplayLinks::createWithActiveCGDisplays() {
    const CGDirectDisplayID main = CGMainDisplayID(*displays_);
    if (main == 0) {
        return {kCVReturnInvalidDisplay, nullptr};
    }
    return {kCVReturnSuccess, std::make_unique<ClockDisplayLink>(std::make_shared<Ticker>(clock_, displays_, main))};
}

}  // namespace zorvane
