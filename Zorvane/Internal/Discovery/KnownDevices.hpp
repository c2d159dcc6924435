// The objects of one kind of device: one for every id ever seen.
#pragma once

#include <algorithm>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "Zorvane/Internal/CurrentValueSubject.hpp"

namespace zorvane {

/// Keeps the objects and publishes their list: first the preferred ones, in the order of preference, then the others by
/// `localizedName`, those of one name by `id`. Reading is safe on any thread; what changes something belongs to the
/// main executor, or to whoever makes the list while nobody else knows of it.
template <class Device>
class KnownDevices {
  public:
    using List = std::vector<std::shared_ptr<Device>>;

    List list() const { return list_.value(); }
    ZVPublisher<List> publisher() const { return list_.publisher(); }

    /// The device with this id; null if there never was one.
    std::shared_ptr<Device> find(std::string_view id) const {
        const List list = this->list();
        const auto found = std::ranges::find_if(list, [id](const auto& device) { return device->id() == id; });
        return found == list.end() ? nullptr : *found;
    }

    /// The object for an id, made by `make()` if it is the first time.
    template <class Make>
    Device& obtain(const std::string& id, Make make) {
        auto& device = allDevices_[id];
        if (!device) {
            device = make();
        }
        return *device;
    }

    /// Calls `visit(device)` for each one that isn't among `present`.
    template <class Visit>
    void forEachMissing(const std::set<std::string>& present, Visit visit) const {
        for (const auto& [id, device] : allDevices_) {
            if (!present.contains(id)) {
                visit(*device);
            }
        }
    }

    /// Publishes the list anew if it has other members, another order, or if `anyChanged` tells that one has changed.
    void publish(const std::vector<std::string>& preferredIDs, bool anyChanged) {
        using Place = std::tuple<std::ptrdiff_t, std::string, std::shared_ptr<Device>>;
        std::vector<Place> places;
        for (const auto& [id, device] : allDevices_) {  // ordered by id
            const auto rank = std::ranges::find(preferredIDs, id) - preferredIDs.begin();
            places.emplace_back(rank, device->localizedName(), device);
        }
        std::ranges::stable_sort(places, {},
                                 [](const Place& place) { return std::tie(std::get<0>(place), std::get<1>(place)); });
        List list;
        for (Place& place : places) {
            list.push_back(std::move(std::get<2>(place)));
        }
        if (anyChanged) {
            list_.send(std::move(list));
        } else {
            list_.update(std::move(list));
        }
    }

  private:
    CurrentValueSubject<List> list_;
    std::map<std::string, std::shared_ptr<Device>> allDevices_;  // never shrinks
};

/// The first preferred device that is available, else the system's main one, else the first available one; null if
/// none is.
template <class Device>
std::shared_ptr<Device> preferredDevice(std::vector<std::shared_ptr<Device>> devices,
                                        std::vector<std::string> preferredIDs, std::string defaultID) {
    std::erase_if(devices,
                  [](const auto& device) { return device->availability() != Device::Availability::available; });
    preferredIDs.push_back(std::move(defaultID));
    for (const std::string& id : preferredIDs) {
        const auto found = std::ranges::find_if(devices, [&id](const auto& device) { return device->id() == id; });
        if (found != devices.end()) {
            return *found;
        }
    }
    return devices.empty() ? nullptr : devices.front();
}

}  // namespace zorvane
