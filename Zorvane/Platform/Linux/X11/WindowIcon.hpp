// The icons that programs put on their windows.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "Zorvane/Platform/AppKit/NSImage.hpp"

namespace zorvane {

/// The largest picture in a value of _NET_WM_ICON that is whole and has sides of 512 pixels at most. The value holds
/// any number of pictures: width, height and as many pixels, alpha in the upper byte, then red, green, blue. Nothing if
/// there is none. Pure.
std::optional<NSImage> largestWindowIcon(std::span<const std::uint32_t> value);

}  // namespace zorvane
