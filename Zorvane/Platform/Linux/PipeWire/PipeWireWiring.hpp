// Ports and links, as far as the server tells of them unasked.
#pragma once

#include <cstdint>
#include <map>
#include <string_view>
#include <vector>

#include "Zorvane/Platform/Linux/PipeWire/PipeWireSoundScene.hpp"

struct spa_dict;

namespace zorvane {

class PipeWireWiring {
  public:
    /// An object of the registry. Whether it is one that counts here: a node, a port, a link.
    bool add(std::uint32_t id, std::string_view type, const spa_dict* properties);
    bool remove(std::uint32_t id);
    void clear();

    /// How many ports give the node's sound or pictures.
    std::uint32_t outputCount(std::uint32_t node) const;

    /// Whether a node gives sound or pictures to one that doesn't belong to the client with this number.
    bool isHeardByOthers(std::uint32_t node, std::uint32_t client) const;

    /// One for each pair of nodes.
    std::vector<PipeWireSoundLink> links() const;

  private:
    std::map<std::uint32_t, std::uint32_t> clients_;  // of nodes
    std::map<std::uint32_t, std::uint32_t> outputs_;  // ports, and their nodes
    std::map<std::uint32_t, PipeWireSoundLink> links_;
};

}  // namespace zorvane
