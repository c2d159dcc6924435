// From X's names of signs and keys to the library's key codes.
#pragma once

#include <cstdint>
#include <string_view>

namespace zorvane {

/// The library's code of a key that has this keysym now. Keys that the library knows by no name, as those of signs,
/// have codes from 256 on, made of the server's own number of the key.
std::int64_t keyCodeOf(std::uint32_t keysym, std::uint8_t key);

/// Whether the key chooses what others do, such as Shift, AltGr, Num Lock and the switch of layouts.
bool isModifier(std::uint32_t keysym);

/// The sign of a dead key, as UTF-8; empty for a keysym that isn't one.
std::string_view signOfDeadKey(std::uint32_t keysym);

}  // namespace zorvane
