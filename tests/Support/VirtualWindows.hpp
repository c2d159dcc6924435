// One-line builders of windows and applications.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

#include "Zorvane/Platform/Virtual/VirtualScene.hpp"

namespace zorvane::testing {

inline const SCRunningApplication someApplication{30, "org.some", "Some"};

/// A window "Window 3" on the screen, of the ordinary level.
inline VirtualWindow window(std::uint32_t id, std::optional<SCRunningApplication> owner = someApplication,
                            const CGRect& frame = CGRect::make(0, 0, 100, 80), std::int32_t layer = 0) {
    VirtualWindow entry;
    entry.window.windowID = id;
    entry.window.frame = frame;
    entry.window.title = "Window " + std::to_string(id);
    entry.window.windowLayer = layer;
    entry.window.isOnScreen = true;
    entry.window.owningApplication = std::move(owner);
    return entry;
}

/// The ids of a list of sources, in its order.
template <class List>
auto idsOf(const List& list) {
    std::vector<std::remove_cvref_t<decltype(list.front()->id())>> ids;
    for (const auto& source : list) {
        ids.push_back(source->id());
    }
    return ids;
}

}  // namespace zorvane::testing
