// Follows the server's sound: nodes, ports, links and defaults.
#pragma once

#include <functional>
#include <memory>

#include "Zorvane/Platform/Linux/PipeWire/PipeWireSession.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireSoundScene.hpp"

namespace zorvane {

/// A client of the session. Give it to `PipeWireSession::add`, and to `remove` when it is needed no more.
class PipeWireSoundGraph : public PipeWireClient {
  public:
    /// Called on the session's thread with each new scene, complete: all that was asked for has come. A burst of changes
    /// is one change. The first scene comes soon after `add`, also if PipeWire isn't there.
    using Observer = std::function<void(const PipeWireSoundScene& scene)>;

    static std::shared_ptr<PipeWireSoundGraph> make(Observer observer);
};

}  // namespace zorvane
