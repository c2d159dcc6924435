// One discovery of each kind per desktop, started at its first use.
#pragma once

#include <memory>
#include <mutex>

#include "Zorvane/Platform/Platform.hpp"

namespace zorvane {

/// The current world's discovery of type `T`, which is made and started by the first call; calls meanwhile wait for
/// that. `T` has a default constructor and a `start()`, which reads the system for the first time, on the calling
/// thread and while nobody knows the object yet. It is outside the world's lock, since a system may hang.
template <class T>
std::shared_ptr<T> sharedDiscovery() {
    struct Entry {
        std::once_flag started;
        std::shared_ptr<T> discovery = std::make_shared<T>();
    };
    const auto entry = Platform::current()->world().shared<Entry>([] { return std::make_shared<Entry>(); });
    std::call_once(entry->started, [&entry] { entry->discovery->start(); });
    return entry->discovery;
}

}  // namespace zorvane
