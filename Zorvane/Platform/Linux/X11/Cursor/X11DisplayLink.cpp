#include "Zorvane/Platform/Linux/X11/Cursor/X11DisplayLink.hpp"

#include <poll.h>
#include <xcb/xcb.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <mutex>
#include <optional>
#include <thread>

#include "Zorvane/Internal/Concurrency/Executor.hpp"
#include "Zorvane/Internal/Concurrency/ThreadName.hpp"
#include "Zorvane/Internal/Concurrency/ThreadSafety.hpp"
#include "Zorvane/Platform/CoreVideo/RefreshInterval.hpp"
#include "Zorvane/Platform/Foundation/NSError.hpp"
#include "Zorvane/Platform/Linux/X11/Alarm.hpp"
#include "Zorvane/Platform/Linux/X11/BrokenPipeSignal.hpp"
#include "Zorvane/Platform/Linux/X11/Cursor/CursorWatch.hpp"
#include "Zorvane/Platform/Linux/X11/Cursor/RefreshPacer.hpp"
#include "Zorvane/Platform/Linux/X11/XConnection.hpp"

namespace zorvane {
namespace {

using std::chrono::milliseconds;
using std::chrono::nanoseconds;

constexpr milliseconds shortestPause(100);
constexpr milliseconds longestPause(2000);

nanoseconds monotonicTime() {
    return std::chrono::steady_clock::now().time_since_epoch();
}

/// Which display a link follows.
struct FollowedDisplay {
    FollowedDisplay(std::shared_ptr<CGDisplays> all, CGDirectDisplayID first)
        : displays(std::move(all)), displayID(first) {}

    const std::shared_ptr<CGDisplays> displays;
    std::atomic<CGDirectDisplayID> displayID;

    nanoseconds interval() const { return refreshInterval(*displays, displayID); }
};

/// One run of a link, from a start to a stop. Shared with the thread, which may outlive the link if its handler let go
/// of that.
class LinkRun {
  public:
    LinkRun(std::shared_ptr<const FollowedDisplay> display, CVDisplayLink::OutputHandler handler)
        : display_(std::move(display)), handler_(std::move(handler)) {}

    /// Comes back after `end`.
    void run() {
        setCurrentThreadName("zv.displaylink");
        blockBrokenPipeSignal();
        for (milliseconds pause = shortestPause; !isEnded_; pause = std::min(2 * pause, longestPause)) {
            if (const auto connection = connect()) {
                pause = shortestPause;
                serve(*connection);
            }
            call();
            wait(std::nullopt, monotonicTime() + pause);
        }
    }

    /// Waits for a call that is under way, unless it is what calls this.
    void end() {
        const std::lock_guard lock(calling_);
        isEnded_ = true;
        alarm_.ring();
    }

  private:
    static std::shared_ptr<XConnection> connect() {
        try {
            return XConnection::open();
        } catch (const NSError&) {
            return nullptr;
        }
    }

    /// Comes back when the server is gone, or at the end.
    void serve(XConnection& connection) {
        CursorWatch watch(connection);
        RefreshPacer pacer;
        pacer.noteChange(monotonicTime());
        while (!isEnded_ && connection.isAlive()) {
            if (watch.take() || !watch.hearsPointer()) {
                pacer.noteChange(monotonicTime());
            }
            const auto now = monotonicTime();
            switch (const auto next = pacer.next(now); next.step) {
                case RefreshPacer::Step::call:
                    call();
                    pacer.noteCall(now, display_->interval());
                    break;
                case RefreshPacer::Step::pause:
                    wait(std::nullopt, next.deadline);
                    break;
                case RefreshPacer::Step::listen:
                    wait(xcb_get_file_descriptor(connection.get()), std::nullopt);
                    break;
            }
        }
    }

    void call() {
        const std::lock_guard lock(calling_);
        if (!isEnded_) {
            handler_();
        }
    }

    /// Until the end, the deadline, or something arrives.
    void wait(std::optional<int> descriptor, std::optional<nanoseconds> deadline) {
        std::array<pollfd, 2> sources{pollfd{.fd = alarm_.descriptor(), .events = POLLIN, .revents = 0},
                                      pollfd{.fd = descriptor.value_or(-1), .events = POLLIN, .revents = 0}};
        timespec rest{};
        if (deadline) {
            const auto left = std::max(*deadline - monotonicTime(), nanoseconds::zero());
            rest.tv_sec = static_cast<time_t>(left.count() / 1'000'000'000);
            rest.tv_nsec = static_cast<long>(left.count() % 1'000'000'000);
        }
        ppoll(sources.data(), sources.size(), deadline ? &rest : nullptr, nullptr);
    }

    const std::shared_ptr<const FollowedDisplay> display_;
    const CVDisplayLink::OutputHandler handler_;
    Alarm alarm_;                        // rings at the end
    std::recursive_mutex calling_;       // held during a call
    std::atomic<bool> isEnded_ = false;  // set under the mutex
};

class X11DisplayLink final : public CVDisplayLink {
  public:
    X11DisplayLink(std::shared_ptr<CGDisplays> displays, CGDirectDisplayID displayID)
        : display_(std::make_shared<FollowedDisplay>(std::move(displays), displayID)) {}
    ~X11DisplayLink() override { X11DisplayLink::stop(); }
    X11DisplayLink(const X11DisplayLink&) = delete;
    X11DisplayLink& operator=(const X11DisplayLink&) = delete;

    CVReturn setOutputHandler(OutputHandler handler) override {
        const MutexLock lock(mutex_);
        if (run_) {
            return kCVReturnDisplayLinkAlreadyRunning;
        }
        handler_ = std::move(handler);
        return kCVReturnSuccess;
    }

    CVReturn setCurrentCGDisplay(CGDirectDisplayID displayID) override {
        if (!display_->displays->properties(displayID)) {
            return kCVReturnInvalidDisplay;
        }
        display_->displayID = displayID;
        return kCVReturnSuccess;
    }

    CGDirectDisplayID currentCGDisplay() const override { return display_->displayID; }

    CVReturn start() override {
        const MutexLock lock(mutex_);
        if (!handler_) {
            return kCVReturnDisplayLinkCallbacksNotSet;
        }
        if (run_) {
            return kCVReturnDisplayLinkAlreadyRunning;
        }
        run_ = std::make_shared<LinkRun>(display_, handler_);
        thread_ = std::thread([run = run_] { run->run(); });
        return kCVReturnSuccess;
    }

    CVReturn stop() override {
        MutexLock lock(mutex_);
        const auto run = std::exchange(run_, nullptr);
        std::thread thread = std::move(thread_);
        lock.unlock();
        if (!run) {
            return kCVReturnDisplayLinkNotRunning;
        }
        const PoolBlockingScope blocking;
        run->end();
        if (thread.get_id() == std::this_thread::get_id()) {
            thread.detach();
        } else {
            thread.join();
        }
        return kCVReturnSuccess;
    }

  private:
    const std::shared_ptr<FollowedDisplay> display_;
    Mutex mutex_;
    OutputHandler handler_ ZV_GUARDED_BY(mutex_);
    std::shared_ptr<LinkRun> run_ ZV_GUARDED_BY(mutex_);  // null while it stands still
    std::thread thread_ ZV_GUARDED_BY(mutex_);
};

}  // namespace

CVDisplayLinks::Created X11DisplayLinks::createWithActiveCGDisplays() {
    const CGDirectDisplayID main = CGMainDisplayID(*displays_);
    if (main == 0) {
        return {kCVReturnInvalidDisplay, nullptr};
    }
    return {kCVReturnSuccess, std::make_unique<X11DisplayLink>(displays_, main)};
}

}  // namespace zorvane
