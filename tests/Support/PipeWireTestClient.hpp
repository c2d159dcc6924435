// Makes devices come and go on the PipeWire of the environment.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Zorvane/Platform/Linux/PipeWire/PipeWireRoutes.hpp"

namespace zorvane {

/// What it made goes with it. Every call returns when the server has done it. One thread. Throws `std::runtime_error`.
class PipeWireTestClient {
  public:
    using Properties = std::map<std::string, std::string>;

    PipeWireTestClient();
    ~PipeWireTestClient();

    /// An audio source that gives silence, unless the properties say otherwise. Returns its number at the server.
    std::uint32_t addNode(Properties properties);
    void removeNode(std::uint32_t node);

    /// Sends sound from one port to another, by their names, as in `link("mic:output_1", "ears:input_1")`.
    void link(const std::string& outputPort, const std::string& inputPort);

    /// A sound card with these routes. Returns its number at the server, for "device.id" of nodes.
    std::uint32_t addCard(const Properties& properties, const PipeWireRoutes& routes);
    void setRoutes(std::uint32_t card, const PipeWireRoutes& routes);

    /// Sets a value of the default metadata, as in `setDefault("default.audio.source", R"({"name": "mic"})")`.
    void setDefault(const std::string& key, const std::string& value);

  private:
    struct State;

    const std::unique_ptr<State> state_;
};

}  // namespace zorvane
