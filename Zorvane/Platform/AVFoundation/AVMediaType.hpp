// The kinds of media that are captured and written.
#pragma once

#include <cstdint>

namespace zorvane {

enum class AVMediaType : std::uint8_t {
    video,
    audio,
    muxed,  ///< picture and sound in one, such as a phone gives; never a track of a file
};

}  // namespace zorvane
