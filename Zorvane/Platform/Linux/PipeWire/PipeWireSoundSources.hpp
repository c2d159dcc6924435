// What an input of sound is to hear.
#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <set>

#include "Zorvane/Platform/Linux/PipeWire/PipeWireSoundScene.hpp"

namespace zorvane {

/// From a port that gives sound into one of the input's channels. Several into one channel are mixed.
struct PipeWireSoundWire {
    std::uint64_t outputPort = 0;  ///< its serial number
    std::uint32_t channel = 0;

    auto operator<=>(const PipeWireSoundWire&) const = default;
};

/// On which side of the air sound is taken, and how far from it in time.
struct PipeWireSoundDistance {
    enum class Side : std::uint8_t {
        recorded,  ///< a microphone's: people heard it `latency` ago
        played,    ///< an application's or a sink's: people will hear it in `latency`
    };

    Side side = Side::recorded;
    PipeWireLatency latency;
    std::optional<std::uint32_t> monitoredSink;  ///< the node whose monitor gives the sound, if one does

    bool operator==(const PipeWireSoundDistance&) const = default;
};

struct PipeWireSoundSources {
    std::set<PipeWireSoundWire> wires;
    PipeWireSoundDistance distance;
};

}  // namespace zorvane
