// What cursor themes call the library's cursors.
#pragma once

#include <optional>
#include <span>
#include <string_view>

#include "Zorvane/ZVInputEvent.hpp"

namespace zorvane {

struct CursorNames {
    ZVCursorType type = ZVCursorType::custom;
    /// The name that new themes have, then those of old ones and of toolkits. Each ends with a zero byte.
    std::span<const char* const> names;
};

/// Every type but `custom` and `disappearingItem`, for which no theme has anything. Themes show one image under many
/// names, and some have one for what are two types here: then the type that stands first has the image. Those that
/// programs ask for stand before those that they hardly do, such as a movable edge before the edge that can be moved
/// one way only.
std::span<const CursorNames> allCursorNames();

/// The type that a name stands for.
std::optional<ZVCursorType> cursorTypeNamed(std::string_view name);

}  // namespace zorvane
