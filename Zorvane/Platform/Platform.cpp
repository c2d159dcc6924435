#include "Zorvane/Platform/Platform.hpp"

#include "Zorvane/Platform/Linux/LinuxPlatform.hpp"

namespace zorvane {

namespace {

struct Current {
    std::mutex mutex;
    std::shared_ptr<const Platform> platform;
};

// Never destroyed: threads of the library may still ask for the platform while the process exits.
Current& currentPlatform() {
    static auto& current = *new Current;
    return current;
}

template <class Backend>
void fillIn(std::shared_ptr<Backend>& member, const std::shared_ptr<Backend>& standard) {
    if (!member) {
        member = standard;
    }
}

std::shared_ptr<const Platform> completed(Platform platform) {
    const Platform standard = makeLinuxPlatform();
    fillIn(platform.clock, standard.clock);
    fillIn(platform.displays, standard.displays);
    fillIn(platform.windowList, standard.windowList);
    fillIn(platform.workspace, standard.workspace);
    fillIn(platform.events, standard.events);
    fillIn(platform.eventMonitors, standard.eventMonitors);
    fillIn(platform.cursors, standard.cursors);
    fillIn(platform.displayLinks, standard.displayLinks);
    fillIn(platform.userDefaults, standard.userDefaults);
    fillIn(platform.captureAccess, standard.captureAccess);
    fillIn(platform.captureDevices, standard.captureDevices);
    fillIn(platform.captureHardware, standard.captureHardware);
    fillIn(platform.platformExpert, standard.platformExpert);
    fillIn(platform.screenCapture, standard.screenCapture);
    fillIn(platform.audioConverting, standard.audioConverting);
    fillIn(platform.videoConverting, standard.videoConverting);
    fillIn(platform.mediaWriting, standard.mediaWriting);
    fillIn(platform.mediaReading, standard.mediaReading);
    return std::make_shared<const Platform>(std::move(platform));
}

}  // namespace

std::shared_ptr<void> World::find(std::type_index type) const {
    for (const auto& [key, object] : entries_) {
        if (key == type) {
            return object;
        }
    }
    return nullptr;
}

void World::end() {
    std::unique_lock lock(mutex_);
    auto entries = std::move(entries_);
    entries_.clear();
    lock.unlock();
    while (!entries.empty()) {
        entries.pop_back();
    }
}

std::shared_ptr<const Platform> Platform::current() {
    Current& current = currentPlatform();
    std::lock_guard lock(current.mutex);
    if (!current.platform) {
        current.platform = completed(Platform{});
    }
    return current.platform;
}

void Platform::install(Platform platform) {
    platform.world_ = std::make_shared<World>();
    auto next = completed(std::move(platform));
    Current& current = currentPlatform();
    std::unique_lock lock(current.mutex);
    auto previous = std::exchange(current.platform, std::move(next));
    lock.unlock();
    if (previous) {
        previous->world().end();
    }
}

}  // namespace zorvane
