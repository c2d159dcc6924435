// One discovery of each kind per desktop, started at its first use.
#pragma once

#include <memory>
#include <mutex>
#include <utility>

#include "Zorvane/Internal/Concurrency/ThreadSafety.hpp"
#include "Zorvane/Platform/Platform.hpp"

namespace zorvane {

namespace detail {

/// A world's place for its discovery of type `T`.
template <class T>
struct DiscoveryPlace {
    std::once_flag started;
    Mutex mutex;
    std::shared_ptr<T> discovery ZV_GUARDED_BY(mutex);  // null until it is started

    static std::shared_ptr<DiscoveryPlace> ofCurrentWorld() {
        return Platform::current()->world().shared<DiscoveryPlace>([] { return std::make_shared<DiscoveryPlace>(); });
    }
};

}  // namespace detail

/// The current world's discovery of type `T` if it has been started, else null.
template <class T>
std::shared_ptr<T> startedDiscovery() {
    const auto place = detail::DiscoveryPlace<T>::ofCurrentWorld();
    MutexLock lock(place->mutex);
    return place->discovery;
}

/// The current world's discovery of type `T`, which is made and started by the first call; calls meanwhile wait for
/// that. `T` has a default constructor and a `start()`, which reads the system for the first time, on the calling
/// thread and while nobody knows the object yet. It is outside the world's lock, since a system may hang.
template <class T>
std::shared_ptr<T> sharedDiscovery() {
    const auto place = detail::DiscoveryPlace<T>::ofCurrentWorld();
    std::call_once(place->started, [&place] {
        auto discovery = std::make_shared<T>();
        discovery->start();
        MutexLock lock(place->mutex);
        place->discovery = std::move(discovery);
    });
    MutexLock lock(place->mutex);
    return place->discovery;
}

}  // namespace zorvane
