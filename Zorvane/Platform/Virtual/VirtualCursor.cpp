#include "Zorvane/Platform/Virtual/VirtualCursor.hpp"

#include <utility>

namespace zorvane {

NSCursor virtualCursor(std::string image, CGPoint hotSpot, CGSize size) {
    return {hotSpot, size, std::make_shared<const std::string>(std::move(image))};
}

NSCursor virtualCursor(ZVCursorType type) {
    return virtualCursor("image of " + std::string(rawValue(type)));
}

}  // namespace zorvane
