// From an X server's modifiers to the library's.
#pragma once

#include <cstdint>

#include "Zorvane/Platform/CoreGraphics/CGEvent.hpp"

namespace zorvane {

/// The core protocol's modifiers, bits of its states.
namespace XModifiers {
inline constexpr std::uint16_t shift = 1U << 0;
inline constexpr std::uint16_t lock = 1U << 1;
inline constexpr std::uint16_t control = 1U << 2;
inline constexpr std::uint16_t mod1 = 1U << 3;
inline constexpr std::uint16_t mod2 = 1U << 4;
inline constexpr std::uint16_t mod4 = 1U << 6;
inline constexpr std::uint16_t all = 0xFF;
}  // namespace XModifiers

/// What the five modifiers without a meaning of their own stand for. AltGr, which only chooses signs, and Num Lock are
/// none of the library's modifiers.
struct ModifierMap {
    std::uint16_t alternate = XModifiers::mod1;  ///< Alt or Meta
    std::uint16_t command = XModifiers::mod4;    ///< Super or Hyper
    std::uint16_t numLock = XModifiers::mod2;

    CGEventFlags flags(std::uint16_t state) const;

    bool operator==(const ModifierMap&) const = default;
};

}  // namespace zorvane
