// From samples that use all 256 levels, as of JPEG, to those of video.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zorvane {

/// Black becomes 16 and white 235; rounded to the nearest level. `from` and `to` may be the same.
void narrowLuma(const std::uint8_t* from, std::uint8_t* to, std::size_t count);

/// Differences of colour, of which 128 is none, become 224 / 255 of what they are.
void narrowChroma(const std::uint8_t* from, std::uint8_t* to, std::size_t count);

}  // namespace zorvane
