// Follows the server's sound: nodes, ports, links and defaults.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "Zorvane/Platform/Linux/PipeWire/PipeWireModel.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWirePort.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireSoundScene.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireWiring.hpp"

namespace zorvane {

/// A client of the session. Give it to `PipeWireSession::add`, and to `remove` when it is needed no more.
class PipeWireSoundGraph final : public PipeWireModel {
  public:
    /// Called on the session's thread with each new scene, complete: all that was asked for has come. A burst of
    /// changes is one change. The first scene comes soon after `add`, also if PipeWire isn't there; the last one, when
    /// the graph is removed, is one without a connection.
    using Observer = std::function<void(const PipeWireSoundScene& scene)>;

    explicit PipeWireSoundGraph(Observer observer) : observer_(std::move(observer)) {}

  private:
    void add(pw_registry* registry, std::uint32_t id, std::string_view type, const spa_dict* properties) override;
    bool remove(std::uint32_t id) override;
    void clear() override;
    void publish(bool isConnected) override;

    PipeWireSoundScene scene(bool isConnected) const;
    PipeWireSoundNode describe(const PipeWireNode& node) const;
    std::int64_t processOf(const PipeWireNode& node) const;

    const Observer observer_;
    std::vector<std::unique_ptr<PipeWireNode>> nodes_;  // in the order in which they came
    std::vector<std::unique_ptr<PipeWirePort>> ports_;
    PipeWireWiring wiring_;
    std::map<std::uint32_t, std::int64_t> clients_;  // their processes
    std::unique_ptr<PipeWireDefaults> defaults_;
    std::optional<PipeWireSoundScene> published_;
};

}  // namespace zorvane
