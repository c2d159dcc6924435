// The port that a camera gives its pictures through. On the session's thread.
#pragma once

#include <cstdint>
#include <vector>

#include "Zorvane/Platform/Linux/PipeWire/PipeWireHandles.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireObjects.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireVideoFormat.hpp"

namespace zorvane {

/// Follows the formats that the port offers. Nodes needn't tell theirs.
class PipeWireVideoPort {
  public:
    /// `properties` are those that the registry tells.
    PipeWireVideoPort(pw_registry* registry, std::uint32_t id, const spa_dict* properties,
                      PipeWireObjectObserver& observer);

    std::uint32_t id() const { return id_; }
    std::uint32_t nodeID() const { return nodeID_; }
    std::uint64_t serial() const { return serial_; }
    const std::vector<PipeWireVideoOffer>& offers() const { return offers_; }

  private:
    static void onParameter(void* self, int sequence, std::uint32_t parameter, std::uint32_t index, std::uint32_t next,
                            const spa_pod* value);

    const std::uint32_t id_;
    const std::uint32_t nodeID_;
    const std::uint64_t serial_;
    PipeWireObjectObserver& observer_;
    std::vector<PipeWireVideoOffer> offers_;
    PipeWireProxy proxy_;
};

}  // namespace zorvane
