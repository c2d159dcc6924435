// A link that is to be made.
#pragma once

#include <compare>
#include <cstdint>

namespace zorvane {

/// From a port that gives sound or pictures into one of a node's inputs. Sound of several into one is mixed.
struct PipeWireWire {
    std::uint64_t outputPort = 0;  ///< its serial number, which no other port ever has
    std::uint32_t input = 0;       ///< of sound, the channel

    auto operator<=>(const PipeWireWire&) const = default;
};

}  // namespace zorvane
