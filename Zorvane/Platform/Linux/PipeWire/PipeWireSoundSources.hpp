// What an input of sound is to hear.
#pragma once

#include <cstdint>
#include <optional>
#include <set>

#include "Zorvane/Platform/Linux/PipeWire/PipeWireSoundScene.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireWire.hpp"

namespace zorvane {

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
    std::set<PipeWireWire> wires;
    PipeWireSoundDistance distance;
};

}  // namespace zorvane
