#include "Zorvane/Platform/Linux/X11/Input/ModifierMap.hpp"

#include <array>
#include <utility>

namespace zorvane {

CGEventFlags ModifierMap::flags(std::uint16_t state) const {
    const std::array<std::pair<std::uint16_t, CGEventFlags>, 5> meanings{{
        {XModifiers::lock, CGEventFlags::maskAlphaShift},
        {XModifiers::shift, CGEventFlags::maskShift},
        {XModifiers::control, CGEventFlags::maskControl},
        {alternate, CGEventFlags::maskAlternate},
        {command, CGEventFlags::maskCommand},
    }};
    CGEventFlags flags = CGEventFlags::none;
    for (const auto& [modifiers, flag] : meanings) {
        if (state & modifiers) {
            flags |= flag;
        }
    }
    return flags;
}

}  // namespace zorvane
