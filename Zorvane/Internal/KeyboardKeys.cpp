#include "Zorvane/Internal/KeyboardKeys.hpp"

#include <algorithm>
#include <array>
#include <cstddef>

namespace zorvane {
namespace {

// In the order of the key types.
constexpr auto keys = std::to_array<KeyboardKey>({
    {"□", "□", -1},
    {"esc", "⎋", 53},
    {"delete", "⌫", 51},
    {"tab", "⇥", 48},
    {"return", "⏎", 36},
    {"space", "␣", 49},
    {"left", "←", 123},
    {"right", "→", 124},
    {"down", "↓", 125},
    {"up", "↑", 126},
    {"forward delete", "⌦", 117},
    {"home", "↖", 115},
    {"end", "↘", 119},
    {"page up", "⇞", 116},
    {"page down", "⇟", 121},
    {"clear", "⌧", 71},
    {"F1", "F1", 122},
    {"F2", "F2", 120},
    {"F3", "F3", 99},
    {"F4", "F4", 118},
    {"F5", "F5", 96},
    {"F6", "F6", 97},
    {"F7", "F7", 98},
    {"F8", "F8", 100},
    {"F9", "F9", 101},
    {"F10", "F10", 109},
    {"F11", "F11", 103},
    {"F12", "F12", 111},
    {"F13", "F13", 105},
    {"F14", "F14", 107},
    {"F15", "F15", 113},
    {"F16", "F16", 106},
    {"F17", "F17", 64},
    {"F18", "F18", 79},
    {"F19", "F19", 80},
});

}  // namespace

const KeyboardKey& keyboardKey(ZVKeyboardKeyType keyType) {
    return keys.at(static_cast<std::size_t>(keyType));
}

ZVKeyboardKeyType keyboardKeyType(std::int64_t keyCode) {
    const auto found = std::ranges::find(keys, keyCode, &KeyboardKey::keyCode);
    const bool isNamed = found != keys.end();
    return isNamed ? static_cast<ZVKeyboardKeyType>(found - keys.begin()) : ZVKeyboardKeyType::character;
}

}  // namespace zorvane
