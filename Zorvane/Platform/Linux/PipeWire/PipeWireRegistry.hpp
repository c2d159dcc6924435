// Follows the server's cameras and microphones.
#pragma once

#include <functional>
#include <memory>
#include <string_view>
#include <vector>

#include "Zorvane/Platform/Linux/PipeWire/PipeWireModel.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireSources.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireVideoPort.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireWiring.hpp"

namespace zorvane {

/// A model of the server's nodes, cards and defaults, and of who uses them.
class PipeWireRegistry final : public PipeWireModel {
  public:
    /// `publish` is called on the session's thread; nothing is there while there is no connection.
    explicit PipeWireRegistry(std::function<void(const PipeWireSources& sources)> publish)
        : publish_(std::move(publish)) {}

  private:
    void add(pw_registry* registry, std::uint32_t id, std::string_view type, const spa_dict* properties) override;
    bool remove(std::uint32_t id) override;
    void clear() override;
    void publish(bool isConnected) override;
    PipeWireSources sources(bool isConnected) const;
    bool isOutputOfCamera(const spa_dict* port) const;
    PipeWireSource describe(const PipeWireNode& node) const;

    const std::function<void(const PipeWireSources&)> publish_;
    std::vector<std::unique_ptr<PipeWireNode>> nodes_;  // in the order in which they came
    std::vector<std::unique_ptr<PipeWireCard>> cards_;
    std::vector<std::unique_ptr<PipeWireVideoPort>> videoPorts_;
    std::unique_ptr<PipeWireDefaults> defaults_;
    PipeWireWiring wiring_;
};

}  // namespace zorvane
