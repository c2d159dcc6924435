#include "Zorvane/Platform/Linux/X11/X11Displays.hpp"

#include <algorithm>
#include <utility>

#include "Zorvane/Platform/CoreGraphics/CGError.hpp"
#include "Zorvane/Platform/Foundation/NSError.hpp"
#include "Zorvane/Platform/Linux/X11/DesktopWatch.hpp"
#include "Zorvane/Platform/Linux/X11/XSession.hpp"

namespace zorvane {

/// A callback that can be ended for good.
class X11Displays::Registration {
  public:
    Registration(CGDisplayReconfigurationCallBack callback, void* userInfo)
        : callback_(callback), userInfo_(userInfo) {}

    bool isOf(CGDisplayReconfigurationCallBack callback, const void* userInfo) const {
        return callback_ == callback && userInfo_ == userInfo;
    }

    void call() {
        constexpr CGDirectDisplayID all = 0;
        const std::lock_guard lock(mutex_);
        if (!isEnded_) {
            callback_(all, CGDisplayChangeSummaryFlags::desktopShapeChanged, userInfo_);
        }
    }

    /// Waits for a call that is under way, unless it is what calls this.
    void end() {
        const std::lock_guard lock(mutex_);
        isEnded_ = true;
    }

  private:
    const CGDisplayReconfigurationCallBack callback_;
    void* const userInfo_;
    std::recursive_mutex mutex_;  // held during a call
    bool isEnded_ = false;        // guarded by mutex_
};

X11Displays::X11Displays(std::shared_ptr<XSession> session, std::shared_ptr<DesktopWatch> watch)
    : session_(std::move(session)), watch_(std::move(watch)) {}

X11Displays::~X11Displays() {
    for (const Registered& each : registered_) {
        each.registration->end();
    }
}

/// The revision is looked at before the question, so that a change in between is asked about again.
std::shared_ptr<const std::vector<XDisplay>> X11Displays::displays() {
    const auto revision = watch_->displaysRevision();
    if (revision) {
        const std::lock_guard lock(mutex_);
        if (known_.displays && known_.revision == *revision) {
            return known_.displays;
        }
    }
    auto displays = std::make_shared<const std::vector<XDisplay>>(readDisplays(*session_->query()));
    if (revision) {
        const std::lock_guard lock(mutex_);
        known_ = {*revision, displays};
    }
    return displays;
}

/// Without a server there is no such display.
std::optional<XDisplay> X11Displays::find(CGDirectDisplayID displayID) {
    try {
        const auto all = displays();
        const auto display =
            std::find_if(all->begin(), all->end(), [&](const XDisplay& each) { return each.displayID == displayID; });
        return display == all->end() ? std::nullopt : std::optional(*display);
    } catch (const NSError&) {
        return std::nullopt;
    }
}

std::vector<CGDirectDisplayID> X11Displays::activeDisplayList() {
    try {
        const auto all = displays();
        std::vector<CGDirectDisplayID> displayIDs;
        for (const XDisplay& display : *all) {
            displayIDs.push_back(display.displayID);
        }
        return displayIDs;
    } catch (const NSError& error) {
        throw CGErrorDescription(CGError::invalidConnection, error.localizedDescription());
    }
}

std::optional<CGDisplayProperties> X11Displays::properties(CGDirectDisplayID displayID) {
    const auto display = find(displayID);
    return display ? std::optional(display->properties) : std::nullopt;
}

std::optional<CGDisplayMode> X11Displays::displayMode(CGDirectDisplayID displayID) {
    const auto display = find(displayID);
    if (!display) {
        return std::nullopt;
    }
    const auto width = static_cast<std::uint32_t>(display->properties.bounds.size.width);
    const auto height = static_cast<std::uint32_t>(display->properties.bounds.size.height);
    return CGDisplayMode{.width = width,
                         .height = height,
                         .pixelWidth = width,
                         .pixelHeight = height,
                         .refreshRate = display->refreshRate};
}

void X11Displays::registerReconfigurationCallback(CGDisplayReconfigurationCallBack callback, void* userInfo) {
    auto registration = std::make_shared<Registration>(callback, userInfo);
    auto observation = watch_->observe(DesktopAspect::displays, [registration] { registration->call(); });
    const std::lock_guard lock(mutex_);
    registered_.push_back({std::move(registration), std::move(observation)});
}

void X11Displays::removeReconfigurationCallback(CGDisplayReconfigurationCallBack callback, void* userInfo) {
    Registered removed;
    {
        const std::lock_guard lock(mutex_);
        const auto found = std::find_if(registered_.begin(), registered_.end(), [&](const Registered& each) {
            return each.registration->isOf(callback, userInfo);
        });
        if (found == registered_.end()) {
            return;
        }
        removed = std::move(*found);
        registered_.erase(found);
    }
    removed.registration->end();
}

}  // namespace zorvane
