// One event of mouse or keyboard, as the core protocol has it.
#pragma once

#include <cstdint>

namespace zorvane {

struct DeviceEvent {
    /// The protocol's numbers.
    enum class Kind : std::uint8_t { keyPress = 2, keyRelease, buttonPress, buttonRelease, motion };

    Kind kind = Kind::motion;
    std::uint8_t detail = 0;  ///< the key's code or the button's number; 0 for a motion
    bool isRepeat = false;    ///< made by a key that is held
    std::uint32_t time = 0;   ///< the server's
    std::int16_t x = 0;       ///< of the pointer on the root window
    std::int16_t y = 0;
    /// Right before the event: modifiers in bits 0 to 7, buttons 1 to 5 from bit 8 on, the keyboard's group in 13
    /// and 14.
    std::uint16_t state = 0;
};

}  // namespace zorvane
