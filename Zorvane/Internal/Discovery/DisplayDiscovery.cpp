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
        Answer answer{.isLaptop = MacModelSpecs::isLaptop()};
        for (const CGInterop::Display& display : CGInterop::Display::getActiveDisplays()) {
            answer.disps.push_back({display, display.displayName()});
        }
        return Reading::success(std::move(answer));
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
        updateDisplays(reading.value().disps, reading.value().isLaptop);
    }
}

void DisplayDiscovery::updateDisplays(const std::vector<NamedDisplay>& disps, bool isLaptop) {
    logger_.trace("Update displays");
    std::set<std::uint32_t> given;
    bool anyChanged = false;
    for (const NamedDisplay& seen : disps) {
        if (given.insert(seen.display.serialNumber).second) {
            anyChanged |= put(seen);
        }
    }
    for (const auto& [id, display] : allDisplays_) {
        if (!given.contains(id)) {
            anyChanged |= noteAbsence(*display, isLaptop);
        }
    }
    publish(anyChanged);
}

bool DisplayDiscovery::put(const NamedDisplay& seen) {
    const CGInterop::Display& properties = seen.display;
    auto& display = allDisplays_[properties.serialNumber];
    if (!display) {
        display.reset(new ZVDisplay(std::unique_ptr<ZVDisplay::State>(
            new ZVDisplay::State{.id = properties.serialNumber, .isBuiltIn = properties.isBuiltIn})));
    }
    ZVDisplay::State& state = *display->state_;
    bool changed = state.displayID.exchange(properties.displayID) != properties.displayID;
    changed |= state.localizedName.update(seen.name);
    changed |= state.isMain.update(properties.isMain);
    changed |= state.frame.update(properties.frame);
    changed |= state.availability.update(ZVDisplay::Availability::available);
    return changed;
}

bool DisplayDiscovery::noteAbsence(ZVDisplay& display, bool isLaptop) {
    const bool isBehindLid = isLaptop && display.isBuiltIn();
    return display.state_->availability.update(isBehindLid ? ZVDisplay::Availability::lidClosed
                                                           : ZVDisplay::Availability::notConnected);
}

void DisplayDiscovery::publish(bool anyChanged) {
    List list;
    for (const auto& [id, display] : allDisplays_) {
        list.push_back(display);
    }
    std::ranges::stable_sort(list, {}, [](const auto& display) { return display->displayID(); });
    const bool isOtherList = list != displays_.value();
    if (isOtherList) {
        logger_.info([&] { return fmt::format("Updating {} displays", list.size()); });
    }
    if (isOtherList || anyChanged) {
        displays_.send(std::move(list));
    }
}

}  // namespace zorvane
