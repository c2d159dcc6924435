// The one connection that everything of PipeWire shares.
#pragma once

#include <memory>

#include "Zorvane/Internal/Concurrency/ThreadSafety.hpp"

struct pw_core;

namespace zorvane {

class PipeWireLoop;

/// What lives on a connection. All calls come on the session's thread.
class PipeWireClient {
  public:
    virtual ~PipeWireClient() = default;

    /// There is a connection, a new one each time.
    virtual void connected(pw_core& core) = 0;
    /// There is none, or no longer: what was made on the last one is destroyed in here.
    virtual void disconnected() = 0;
};

/// Connects when it is first used, and again whenever PipeWire comes back. Without PipeWire it waits for the socket to
/// appear, which costs nothing. Any thread.
class PipeWireSession {
  public:
    PipeWireSession();
    PipeWireSession(const PipeWireSession&) = delete;
    PipeWireSession& operator=(const PipeWireSession&) = delete;
    /// Disconnects the clients and ends the thread. Waits for that, unless it is called on the thread itself.
    ~PipeWireSession();

    /// Tells `client` at once, in this call or on the thread, whether there is a connection, and then of each change.
    /// The first call reads the environment and starts the thread.
    void add(std::shared_ptr<PipeWireClient> client);
    /// Disconnects `client`, on the thread, and lets go of it.
    void remove(std::shared_ptr<PipeWireClient> client);

  private:
    /// Null if it can't be started.
    PipeWireLoop* loop() ZV_REQUIRES(mutex_);

    Mutex mutex_;
    std::unique_ptr<PipeWireLoop> loop_ ZV_GUARDED_BY(mutex_);
};

}  // namespace zorvane
