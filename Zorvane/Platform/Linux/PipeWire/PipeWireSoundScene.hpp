// Who makes sound and who hears it, as PipeWire describes them.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "Zorvane/Platform/Linux/PipeWire/PipeWireProperties.hpp"

namespace zorvane {

/// How long sound takes between a port and the air.
struct PipeWireLatency {
    double quanta = 0;  ///< cycles of the graph
    std::int64_t frames = 0;
    std::chrono::nanoseconds time{0};

    /// For a cycle of so many frames at a rate.
    std::chrono::nanoseconds at(std::uint32_t quantum, double rate) const;

    bool operator==(const PipeWireLatency&) const = default;
};

/// One channel into or out of a node.
struct PipeWireSoundPort {
    enum class Kind : std::uint8_t {
        input,
        output,
        monitor,  ///< an output that repeats an input of the same node
    };

    std::uint64_t serial = 0;  ///< its own for ever
    Kind kind = Kind::output;
    std::string channel;      ///< such as "FL", "MONO", "AUX3"
    PipeWireLatency latency;  ///< of a microphone's output: since it was heard; else until it is

    bool operator==(const PipeWireSoundPort&) const = default;
};

/// A microphone, a pair of speakers, what an application plays or records.
struct PipeWireSoundNode {
    std::uint32_t id = 0;    ///< while it lives; given to another one later
    std::string mediaClass;  ///< such as "Audio/Sink", "Audio/Source", "Stream/Output/Audio"
    std::string name;
    std::int64_t processID = 0;  ///< of the application that it belongs to; 0 when it is unknown
    PipeWireProperties properties;
    std::vector<PipeWireSoundPort> ports;  ///< in the order of their channels

    bool operator==(const PipeWireSoundNode&) const = default;
};

/// Sound goes from one node to another, through one or more of their ports.
struct PipeWireSoundLink {
    std::uint32_t outputNode = 0;
    std::uint32_t inputNode = 0;

    bool operator==(const PipeWireSoundLink&) const = default;
};

/// All of that at one moment.
struct PipeWireSoundScene {
    bool isConnected = false;              ///< else PipeWire isn't there
    std::vector<PipeWireSoundNode> nodes;  ///< in the order in which they came
    std::vector<PipeWireSoundLink> links;
    std::string defaultSinkName;    ///< of the node that plays what chooses no other; empty when there is none
    std::string defaultSourceName;  ///< of the preferred microphone, likewise

    /// The first one of this name; null if there is none.
    const PipeWireSoundNode* node(std::string_view name) const;
    const PipeWireSoundNode* node(std::uint32_t id) const;

    bool operator==(const PipeWireSoundScene&) const = default;
};

}  // namespace zorvane
