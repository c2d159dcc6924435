#include "Zorvane/Platform/Linux/X11/DisplaySerials.hpp"

#include <algorithm>
#include <map>
#include <numeric>
#include <set>

#include "Zorvane/Platform/Linux/X11/EDID.hpp"

namespace zorvane {
namespace {

std::uint32_t ownSerial(const DisplayIdentity& display) {
    const auto edid = EDID::parse(display.edid);
    return edid ? edid->serialNumber : 0;
}

/// FNV-1a.
std::uint32_t hash(const DisplayIdentity& display) {
    std::uint32_t value = 2166136261U;
    const auto add = [&value](std::uint8_t byte) { value = (value ^ byte) * 16777619U; };
    std::for_each(display.edid.begin(), display.edid.end(), add);
    for (const char letter : display.connector) {
        add(static_cast<std::uint8_t>(letter));
    }
    return value;
}

}  // namespace

std::vector<std::uint32_t> displaySerialNumbers(const std::vector<DisplayIdentity>& displays) {
    std::vector<std::uint32_t> numbers(displays.size());
    std::map<std::uint32_t, int> owners;
    for (const DisplayIdentity& display : displays) {
        ++owners[ownSerial(display)];
    }
    std::set<std::uint32_t> taken{0};
    std::vector<std::size_t> derived;
    for (std::size_t index = 0; index < displays.size(); ++index) {
        const std::uint32_t serial = ownSerial(displays[index]);
        if (serial != 0 && owners[serial] == 1) {
            numbers[index] = serial;
            taken.insert(serial);
        } else {
            derived.push_back(index);
        }
    }
    // In the order of the connectors, so that two numbers that clash move apart the same way each time.
    std::stable_sort(derived.begin(), derived.end(),
                     [&](std::size_t a, std::size_t b) { return displays[a].connector < displays[b].connector; });
    for (const std::size_t index : derived) {
        std::uint32_t number = hash(displays[index]);
        while (!taken.insert(number).second) {
            ++number;
        }
        numbers[index] = number;
    }
    return numbers;
}

DisplayNumbering& DisplayNumbering::shared() {
    static auto& numbering = *new DisplayNumbering;  // never destroyed: threads may ask while the process exits
    return numbering;
}

std::vector<std::uint32_t> DisplayNumbering::assign(const std::vector<DisplayIdentity>& displays) {
    const std::lock_guard lock(mutex_);
    std::vector<std::uint32_t> numbers(displays.size());
    std::set<std::uint32_t> taken{0};
    const auto keepKnown = [&](bool wasPresent) {
        for (std::size_t index = 0; index < displays.size(); ++index) {
            const auto known = known_.find(displays[index]);
            if (known != known_.end() && numbers[index] == 0 && present_.contains(displays[index]) == wasPresent &&
                taken.insert(known->second).second) {
                numbers[index] = known->second;
            }
        }
    };
    keepKnown(true);
    keepKnown(false);
    const auto fresh = displaySerialNumbers(displays);
    for (std::size_t index = 0; index < displays.size(); ++index) {
        if (numbers[index] == 0) {
            numbers[index] = fresh[index];
            while (!taken.insert(numbers[index]).second) {
                ++numbers[index];
            }
        }
    }
    present_.clear();
    for (std::size_t index = 0; index < displays.size(); ++index) {
        known_[displays[index]] = numbers[index];
        present_.insert(displays[index]);
    }
    return numbers;
}

}  // namespace zorvane
