// A connection that comes back.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <vector>

#include "Zorvane/Platform/Linux/PipeWire/PipeWireHandles.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireSession.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireSocket.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireSocketWatch.hpp"

namespace zorvane {

/// Lives on the session's thread, in three states:
///
///     waiting ── socket appears ──> connecting ── server answers ──> connected
///        ^                            │    ^                             │
///        └── nobody listens for 10 s ─┘    └──────── server ends ────────┘
///
/// Connecting is tried again after a pause that doubles, because a service that starts makes its socket before it
/// listens, and one that ends may be started by the next who connects. A socket that is missing or closed to this user
/// is not tried again before its folder changes.
class PipeWireConnection {
  public:
    /// Begins to connect.
    PipeWireConnection(pw_loop& loop, std::filesystem::path socket);
    PipeWireConnection(const PipeWireConnection&) = delete;
    PipeWireConnection& operator=(const PipeWireConnection&) = delete;
    /// Disconnects the clients.
    ~PipeWireConnection();

    void add(const std::shared_ptr<PipeWireClient>& client);
    void remove(const std::shared_ptr<PipeWireClient>& client);

  private:
    void watchSocket();
    void socketChanged();
    void tryToConnect();
    void tryAgainAfterPause();
    void adopt(FileDescriptor socket);
    void stopLooking();
    void serverEnded();
    void hangUp();

    static void onDone(void* self, std::uint32_t id, int sequence);
    static void onError(void* self, std::uint32_t id, int sequence, int result, const char* message);

    pw_loop& loop_;
    const std::filesystem::path socketPath_;
    const PipeWireLoopSource timer_;
    const PipeWireLoopSource end_;  // raised when the server ends, since a core can't go while it tells of that
    std::optional<PipeWireSocketWatch> watch_;
    PipeWireLoopSource watchSource_;
    unsigned attempts_ = 0;  // since the server last answered or its folder changed
    PipeWireContextOwner context_;
    PipeWireCoreOwner core_;
    PipeWireHook coreHook_;
    std::vector<std::shared_ptr<PipeWireClient>> clients_;
};

}  // namespace zorvane
