// The one connection that queries share.
#pragma once

#include <memory>
#include <mutex>

namespace zorvane {

class XConnection;

/// Opens a connection when one is first asked for, and again when it was lost. Any thread.
class XSession {
  public:
    /// A living connection. Blocks while it is being made. Throws `NSError`.
    std::shared_ptr<XConnection> connection();

    /// Cuts the connection: queries that wait on it come back with an error, the next one makes a new connection.
    void reset();

  private:
    std::mutex opening_;  // held while a connection is being made, so that only one is
    std::mutex mutex_;    // guards connection_; never held for long
    std::shared_ptr<XConnection> connection_;
};

}  // namespace zorvane
