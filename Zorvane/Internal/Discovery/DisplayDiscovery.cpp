#include "Zorvane/Internal/Discovery/DisplayDiscovery.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <set>
#include <utility>

#include "Zorvane/Internal/CGInterop/MacModelSpecs.hpp"
#include "Zorvane/Internal/Concurrency/Executor.hpp"
#include "Zorvane/Internal/Discovery/SharedDiscovery.hpp"
#include "Zorvane/Internal/Discovery/ZVDisplayState.hpp"
#include "Zorvane/Internal/ZVUserPreferred.hpp"
#include "Zorvane/ZVError.hpp"

namespace zorvane {
namespace {

bool isAvailable(const ZVDisplay& display) {
    return display.availability() == ZVDisplay::Availability::available;
}

}  // namespace

std::shared_ptr<DisplayDiscovery> DisplayDiscovery::shared() {
    return sharedDiscovery<DisplayDiscovery>();
}

DisplayDiscovery::DisplayDiscovery()
    : logger_(Logger::forType<DisplayDiscovery>()), reader_(Executor::makeStrand("DisplayDiscovery")) {}

DisplayDiscovery::~DisplayDiscovery() {
    zvDisplaysTask_.cancel();
}

void DisplayDiscovery::start() {
    logger_.debug("Starting with inital displays");
    // Before the first read, so that no change is missed.
    auto reconfigurations = CGInterop::Display::allReconfigurations();
    apply(read());
    zvDisplaysTask_ = spawn(follow(weak_from_this(), std::move(reconfigurations)), reader_);
}

std::shared_ptr<ZVDisplay> DisplayDiscovery::find(std::uint32_t id) const {
    const List displays = this->displays();
    const auto found = std::ranges::find_if(displays, [id](const auto& display) { return display->id() == id; });
    return found == displays.end() ? nullptr : *found;
}

std::shared_ptr<ZVDisplay> DisplayDiscovery::getPreferred() const {
    List available = displays();
    std::erase_if(available, [](const auto& display) { return !isAvailable(*display); });
    for (const std::uint32_t id : ZVUserPreferred::shared()->displayIDs()) {
        const auto preferred = std::ranges::find(available, id, [](const auto& display) { return display->id(); });
        if (preferred != available.end()) {
            return *preferred;
        }
    }
    const auto main = std::ranges::find_if(available, [](const auto& display) { return display->isMain(); });
    return main != available.end() ? *main : nullptr;
}

void DisplayDiscovery::triggerUpdate() {
    logger_.debug("Trigger update");
    reader_->post([weak = weak_from_this()] {
        if (const auto self = weak.lock()) {
            self->refresh();
        }
    });
}

Task<> DisplayDiscovery::follow(std::weak_ptr<DisplayDiscovery> weak,
                                AsyncStream<CGInterop::Display::Reconfiguration> reconfigurations) {
    while (const auto change = co_await reconfigurations.next()) {
        if (const auto self = weak.lock()) {
            self->refresh();
        }
    }
}

DisplayDiscovery::Reading DisplayDiscovery::read() {
    const PoolBlockingScope blocking;
    try {
        return Reading::success(CGInterop::Display::getActiveDisplays());
    } catch (...) {
        return Reading::failure(std::current_exception());
    }
}

void DisplayDiscovery::refresh() {
    Executor::main()->post([weak = weak_from_this(), reading = read()] {
        if (const auto self = weak.lock()) {
            self->apply(reading);
        }
    });
}

void DisplayDiscovery::apply(const Reading& reading) {
    failure_.update(reading.error());
    if (reading.error()) {
        logger_.error(
            [&] { return fmt::format("Failed to get active displays: {}", debugDescription(reading.error())); });
    } else {
        updateDisplays(reading.value());
    }
}

void DisplayDiscovery::updateDisplays(const std::vector<CGInterop::Display>& disps) {
    logger_.trace("Update displays");
    std::set<std::uint32_t> given;
    for (const CGInterop::Display& display : disps) {
        if (given.insert(display.serialNumber).second) {
            put(display);
        }
    }
    const auto absence =
        MacModelSpecs::isLaptop() ? ZVDisplay::Availability::lidClosed : ZVDisplay::Availability::notConnected;
    for (const auto& [id, display] : allDisplays_) {
        if (!given.contains(id)) {
            display->state_->availability.update(display->isBuiltIn() ? absence
                                                                      : ZVDisplay::Availability::notConnected);
        }
    }
    publish();
}

void DisplayDiscovery::put(const CGInterop::Display& seen) {
    auto& display = allDisplays_[seen.serialNumber];
    if (!display) {
        display.reset(new ZVDisplay(std::unique_ptr<ZVDisplay::State>(
            new ZVDisplay::State{.id = seen.serialNumber, .isBuiltIn = seen.isBuiltIn})));
    }
    ZVDisplay::State& state = *display->state_;
    state.displayID = seen.displayID;
    state.localizedName.update(seen.displayName());
    state.isMain.update(seen.isMain);
    state.frame.update(seen.frame);
    state.availability.update(ZVDisplay::Availability::available);
}

void DisplayDiscovery::publish() {
    List list;
    for (const auto& [id, display] : allDisplays_) {
        list.push_back(display);
    }
    std::ranges::stable_sort(list, {}, [](const auto& display) { return display->displayID(); });
    if (displays_.update(list)) {
        logger_.info([&] { return fmt::format("Updating {} displays", list.size()); });
    }
}

}  // namespace zorvane
