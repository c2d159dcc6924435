#include "Zorvane/Internal/TopWindowTracker.hpp"

#include <algorithm>
#include <chrono>
#include <utility>

#include "Zorvane/Internal/CGInterop/DisplayContaining.hpp"
#include "Zorvane/Internal/Concurrency/Executor.hpp"
#include "Zorvane/Internal/Concurrency/Sleep.hpp"
#include "Zorvane/Internal/WindowPositionInfo.hpp"
#include "Zorvane/Platform/CoreGraphics/CGWindowList.hpp"
#include "Zorvane/Platform/CoreMedia/CMClock.hpp"
#include "Zorvane/Platform/Platform.hpp"

namespace zorvane {
namespace {

/// However many changes there are, others get their turn.
constexpr std::chrono::nanoseconds shortestPause = std::chrono::milliseconds(1);

/// Lists of displays hold those that have gone too.
ZVDisplay::List availableOnes(ZVDisplay::List displays) {
    std::erase_if(displays, [](const std::shared_ptr<ZVDisplay>& display) {
        return display->availability() != ZVDisplay::Availability::available;
    });
    return displays;
}

CGRect frameOf(const std::shared_ptr<ZVDisplay>& display) {
    return display->frame();
}

}  // namespace

std::shared_ptr<TopWindowTracker> TopWindowTracker::make(std::optional<CGDirectDisplayID> displayID,
                                                         ZVWindow::FilterOptions windowFilterOptions) {
    std::shared_ptr<TopWindowTracker> tracker(new TopWindowTracker(displayID, windowFilterOptions));
    tracker->start();
    return tracker;
}

/// Looks for itself first, so that the first update of a stream knows the front window already.
void TopWindowTracker::start() {
    auto windowUpdates = ZVWindow::updates(windowFilterOptions_);
    auto displayUpdates = ZVDisplay::updates();
    windowListObservation_ = Platform::current()->windowList->observe([weak = std::weak_ptr(changes_)] {
        if (const auto changes = weak.lock()) {
            changes->send();
        }
    });
    processUpdate(ZVWindow::windows(windowFilterOptions_), ZVDisplay::displays());
    const auto strand = Executor::makeStrand("TopWindowTracker");
    windowUpdatesTask_ = spawn(followWindows(weak_from_this(), std::move(windowUpdates)), strand);
    displayUpdatesTask_ = spawn(followDisplays(weak_from_this(), std::move(displayUpdates)), strand);
}

TopWindowTracker::~TopWindowTracker() {
    windowUpdatesTask_.cancel();
    displayUpdatesTask_.cancel();
}

AsyncStream<TopWindowTracker::Update> TopWindowTracker::updates() {
    auto [stream, source] = AsyncStream<Update>::make(StreamBuffering::newest(1));
    const auto polling = spawn(poll(weak_from_this(), changes_->changes(), source));
    source.onTermination([polling] { polling.cancel(); });
    return std::move(stream);
}

Task<> TopWindowTracker::followWindows(std::weak_ptr<TopWindowTracker> weak, AsyncStream<ZVWindow::List> updates) {
    while (const auto windows = co_await updates.next()) {
        if (const auto self = weak.lock()) {
            self->processUpdate(*windows, ZVDisplay::displays());
        }
    }
}

Task<> TopWindowTracker::followDisplays(std::weak_ptr<TopWindowTracker> weak, AsyncStream<ZVDisplay::List> updates) {
    while (const auto displays = co_await updates.next()) {
        if (const auto self = weak.lock()) {
            self->processUpdate(ZVWindow::windows(self->windowFilterOptions_), *displays);
        }
    }
}

/// A title comes with the list of windows, of which the window server need not have told.
void TopWindowTracker::processUpdate(const ZVWindow::List& windows, const ZVDisplay::List& displays) {
    const auto found = findTopWindow(windows, displays);
    {
        const MutexLock lock(mutex_);
        if (!found || !topWindow_ || found->id() != topWindow_->id()) {
            topWindow_ = found;
        }
    }
    changes_->send();
}

std::shared_ptr<ZVWindow> TopWindowTracker::findTopWindow(const ZVWindow::List& windows,
                                                          const ZVDisplay::List& displays) const {
    const ZVDisplay::List candidates = availableOnes(displays);
    const auto found = std::ranges::find_if(windows, [&](const std::shared_ptr<ZVWindow>& window) {
        if (!targetDisplayID_) {
            return true;
        }
        const auto* display = displayContaining(candidates, frameOf, window->frame());
        return display && (*display)->displayID() == *targetDisplayID_;
    });
    return found != windows.end() ? *found : nullptr;
}

std::shared_ptr<ZVWindow> TopWindowTracker::topWindow() const {
    const MutexLock lock(mutex_);
    return topWindow_;
}

Task<> TopWindowTracker::poll(std::weak_ptr<const TopWindowTracker> weak, AsyncStream<ChangeSignal::Change> changes,
                              AsyncStreamSource<Update> source) {
    const auto clock = Platform::current()->clock;
    std::optional<Update> last;
    auto lookedAt = clock->now();
    while (auto update = look(weak)) {
        if (!last || last->windowSnapshot != update->windowSnapshot) {
            source.yield(*update);
            last = std::move(update);
        }
        co_await changes.next();
        if (const auto pause = lookedAt + shortestPause - clock->now(); pause > pause.zero()) {
            co_await sleepFor(pause, pause.zero());
        }
        lookedAt = clock->now();
    }
}

/// Nothing when the tracker is gone.
std::optional<TopWindowTracker::Update> TopWindowTracker::look(const std::weak_ptr<const TopWindowTracker>& weak) {
    const auto self = weak.lock();
    return self ? std::optional(self->currentUpdate()) : std::nullopt;
}

TopWindowTracker::Update TopWindowTracker::currentUpdate() const {
    const auto window = topWindow();
    const auto positions =
        window ? WindowPositionInfo::getWindowPositions({window->id()}) : std::vector<WindowPositionInfo>();
    if (positions.empty()) {
        return {.timestamp = hostTimeClockTime().seconds()};
    }
    const WindowPositionInfo& position = positions.front();
    return {.timestamp = position.timestamp,
            .windowSnapshot = WindowSnapshot{.windowID = window->id(),
                                             .windowTitle = window->title(),
                                             .applicationID = window->applicationProcessID(),
                                             .applicationName = window->applicationName(),
                                             .level = ZVWindow::Level{position.layer},
                                             .topLeftFrame = position.topLeftFrame}};
}

}  // namespace zorvane
