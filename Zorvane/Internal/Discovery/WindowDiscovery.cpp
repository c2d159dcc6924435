#include "Zorvane/Internal/Discovery/WindowDiscovery.hpp"

#include <algorithm>
#include <set>
#include <utility>

#include "Zorvane/Internal/Discovery/DisplayDiscovery.hpp"
#include "Zorvane/Internal/Discovery/SharedDiscovery.hpp"
#include "Zorvane/Internal/Discovery/ZVWindowState.hpp"
#include "Zorvane/Platform/AppKit/NSWorkspace.hpp"

namespace zorvane {
namespace {

std::vector<CGRect> framesOf(const DisplayDiscovery& discovery) {
    std::vector<CGRect> frames;
    for (const auto& display : discovery.displays()) {
        if (display->availability() == ZVDisplay::Availability::available) {
            frames.push_back(display->frame());
        }
    }
    return frames;
}

bool isInsideAny(const std::vector<CGRect>& displayFrames, const CGRect& frame) {
    return std::ranges::any_of(
        displayFrames, [&frame](const CGRect& displayFrame) { return CGRectIntersectsRect(displayFrame, frame); });
}

}  // namespace

std::shared_ptr<WindowDiscovery> WindowDiscovery::shared() {
    return sharedDiscovery<WindowDiscovery>();
}

WindowDiscovery::WindowDiscovery() : logger_(Logger::forType<WindowDiscovery>()) {}

void WindowDiscovery::start() {
    logger_.debug("Starting with inital windows");
    displays_ = DisplayDiscovery::shared();
    cgWindows_ = std::make_shared<AnswerPoll<Answer>>(AnswerPoll<Answer>::Parameters{
        .label = "windows",
        .ask =
            [displays = displays_] {
                return Answer{CGInterop::Window::getWindows(CGWindowListOption::onScreenOnly, kCGNullWindowID),
                              framesOf(*displays)};
            },
        .tell =
            [weak = weak_from_this()](const Answer& answer) {
                if (const auto self = weak.lock()) {
                    self->updateWindows(answer.windows);
                }
            },
        .logger = logger_,
    });
    cgWindows_->start();
    frontmostApplicationObservation_ =
        Platform::current()->workspace->observeFrontmostApplication([weak = std::weak_ptr(cgWindows_)] {
            if (const auto poll = weak.lock()) {
                poll->askNow();
            }
        });
}

AsyncStream<WindowDiscovery::List> WindowDiscovery::updates(ZVWindow::FilterOptions options) const {
    return windows_.publisher().values([options](const List& windows) { return ZVWindow::filtered(windows, options); });
}

void WindowDiscovery::updateWindows(const std::vector<CGInterop::Window>& wins) {
    logger_.trace("Update windows");
    const std::vector<CGRect> displayFrames = framesOf(*displays_);
    List list;
    std::set<std::uint32_t> listed;
    for (const CGInterop::Window& window : wins) {
        if (listed.insert(window.windowID).second) {
            list.push_back(put(window, displayFrames));
        }
    }
    // The others that are known have been closed before.
    for (const auto& window : windows_.value()) {
        if (!listed.contains(window->id())) {
            window->state_->availability.update(ZVWindow::Availability::closed);
        }
    }
    logger_.info([&] { return fmt::format("Updating {} windows", list.size()); });
    windows_.send(std::move(list));
}

std::shared_ptr<ZVWindow> WindowDiscovery::put(const CGInterop::Window& seen,
                                               const std::vector<CGRect>& displayFrames) {
    auto window = find(seen.windowID);
    const bool isNew = !window;
    if (isNew) {
        window.reset(new ZVWindow(std::unique_ptr<ZVWindow::State>(new ZVWindow::State{.id = seen.windowID})));
    }
    ZVWindow::State& state = *window->state_;
    state.title.update(seen.title);
    state.frame.update(seen.frame);
    state.level.update(ZVWindow::Level{seen.layer});
    state.applicationProcessID.update(seen.ownerPID != 0 ? std::optional(seen.ownerPID) : std::nullopt);
    state.applicationName.update(!seen.ownerName.empty() ? std::optional(seen.ownerName) : std::nullopt);
    state.insideVisibleFrame.update(isInsideAny(displayFrames, seen.frame));
    state.availability.update(seen.isOnScreen ? ZVWindow::Availability::available
                                              : ZVWindow::Availability::notOnScreen);
    if (isNew) {
        MutexLock lock(mutex_);
        allWindows_.emplace(seen.windowID, window);
    }
    return window;
}

std::shared_ptr<ZVWindow> WindowDiscovery::find(std::uint32_t id) const {
    MutexLock lock(mutex_);
    const auto found = allWindows_.find(id);
    return found == allWindows_.end() ? nullptr : found->second;
}

}  // namespace zorvane
