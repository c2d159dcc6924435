#include "Zorvane/Platform/Virtual/VirtualDesktop.hpp"

#include <cmath>

#include "Zorvane/Internal/Concurrency/Executor.hpp"
#include "Zorvane/Platform/Virtual/VirtualCaptureDevices.hpp"
#include "Zorvane/Platform/Virtual/VirtualMoment.hpp"

namespace zorvane {

using std::chrono::nanoseconds;

std::shared_ptr<VirtualDesktop> VirtualDesktop::make(std::shared_ptr<HostClock> clock,
                                                     std::vector<VirtualDisplay> displays) {
    return std::shared_ptr<VirtualDesktop>(new VirtualDesktop(std::move(clock), displays));
}

VirtualDesktop::VirtualDesktop(std::shared_ptr<HostClock> clock, const std::vector<VirtualDisplay>& displays)
    : clock_(std::move(clock)),
      origin_(clock_->now()),
      script_(Executor::makeStrand("zv.virtual.script")),
      captureDevices_(std::make_shared<VirtualCaptureDevices>(clock_)) {
    for (const VirtualDisplay& display : displays) {
        state_.scene.put(display);
    }
}

VirtualMoment VirtualDesktop::at(double seconds) {
    return {shared_from_this(), origin_ + nanoseconds(std::llround(seconds * 1e9))};
}

VirtualMoment VirtualDesktop::now() {
    return {shared_from_this(), clock_->now()};
}

void VirtualDesktop::perform(nanoseconds hostTime, Action action) {
    if (hostTime <= clock_->now()) {
        action(*this);
    } else {
        schedule(hostTime, std::move(action));
    }
}

void VirtualDesktop::schedule(nanoseconds hostTime, Action action) {
    auto fire = [weak = weak_from_this(), action = std::move(action)] {
        if (auto desktop = weak.lock()) {
            Executor& script = *desktop->script_;
            script.post([desktop = std::move(desktop), action] { action(*desktop); });
        }
    };
    clock_->schedule(hostTime, nanoseconds::zero(), std::move(fire));
}

void VirtualDesktop::changeScene(const std::function<void(VirtualScene&)>& change) {
    const auto [before, after] = withState([&change](VirtualDesktopState& state) {
        const VirtualSceneOutline old(state.scene);
        change(state.scene);
        return std::pair(old, VirtualSceneOutline(state.scene));
    });
    tellOfChange(sceneHandlers_, before, after);
}

void VirtualDesktop::add(std::weak_ptr<VirtualDisplayObserver> observer) {
    MutexLock lock(mutex_);
    std::erase_if(observers_, [](const auto& known) { return known.expired(); });
    observers_.push_back(std::move(observer));
}

std::vector<std::shared_ptr<VirtualDisplayObserver>> VirtualDesktop::observers(CGDirectDisplayID displayID) {
    std::vector<std::shared_ptr<VirtualDisplayObserver>> found;
    MutexLock lock(mutex_);
    for (const auto& known : observers_) {
        if (auto observer = known.lock(); observer && observer->displayID() == displayID) {
            found.push_back(std::move(observer));
        }
    }
    return found;
}

}  // namespace zorvane
