// A port of a node of sound. On the session's thread.
#pragma once

#include <cstdint>

#include "Zorvane/Platform/Linux/PipeWire/PipeWireHandles.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireObjects.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireSoundScene.hpp"

namespace zorvane {

/// Follows the port's latencies: it has one towards the devices behind it and one towards those before it.
class PipeWirePort {
  public:
    /// `properties` are those that the registry tells.
    PipeWirePort(pw_registry* registry, std::uint32_t id, const spa_dict* properties, PipeWireObjectObserver& observer);

    std::uint32_t id() const { return id_; }
    std::uint32_t nodeID() const { return nodeID_; }
    /// Its number among the node's ports of its direction.
    std::uint32_t number() const { return number_; }
    /// With the latency of one of a microphone's or of another node's ports.
    PipeWireSoundPort port(bool isOfMicrophone) const;

  private:
    static void onParameter(void* self, int sequence, std::uint32_t parameter, std::uint32_t index, std::uint32_t next,
                            const spa_pod* value);

    const std::uint32_t id_;
    const std::uint32_t nodeID_;
    const std::uint32_t number_;
    const PipeWireSoundPort port_;  // without latency
    PipeWireLatency untilHeard_;
    PipeWireLatency sinceHeard_;
    PipeWireObjectObserver& observer_;
    PipeWireProxy proxy_;
};

}  // namespace zorvane
