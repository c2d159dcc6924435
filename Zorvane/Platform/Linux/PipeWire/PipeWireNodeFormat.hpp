// The layout of what a node of sound gives.
#pragma once

#include <cstdint>

struct spa_pod;

namespace zorvane {

/// 0 stands for what isn't known.
struct PipeWireNodeFormat {
    std::uint32_t rate = 0;  ///< frames per second
    std::uint32_t channelCount = 0;

    bool operator==(const PipeWireNodeFormat&) const = default;
};

/// A `Format` parameter, or what an `EnumFormat` one prefers.
PipeWireNodeFormat parseNodeFormat(const spa_pod* parameter);

}  // namespace zorvane
