// The colour spaces a screen can be recorded in.
#pragma once

#include <string_view>

namespace zorvane {

/// Decides the codec, the largest picture and the colours of a screen recording.
enum class ZVColorSpace {
    sRGB,       ///< H.264, 8 bits, at most 4096 by 2304 pixels
    displayP3,  ///< HEVC, 10 bits, at most 7680 by 4320 pixels
};

/// The name of a colour space as JSON holds it: "sRGB" or "displayP3".
constexpr std::string_view rawValue(ZVColorSpace colorSpace) {
    return colorSpace == ZVColorSpace::displayP3 ? "displayP3" : "sRGB";
}

}  // namespace zorvane
