#include "Zorvane/Platform/Virtual/VirtualCursors.hpp"

#include "Zorvane/Platform/Virtual/VirtualCursor.hpp"

namespace zorvane {

std::optional<NSCursor> VirtualCursors::currentSystemCursor() {
    return desktop_->withState([](VirtualDesktopState& state) { return state.scene.cursor; });
}

std::optional<NSCursor> VirtualCursors::systemCursor(ZVCursorType type) {
    return type == ZVCursorType::custom ? std::nullopt : std::optional(virtualCursor(type));
}

}  // namespace zorvane
