// The one connection that queries share.
#pragma once

#include <memory>
#include <mutex>

#include "Zorvane/Platform/Linux/X11/BrokenPipeSignal.hpp"
#include "Zorvane/Platform/Linux/X11/XAnswerLimit.hpp"
#include "Zorvane/Platform/Linux/X11/XConnection.hpp"

namespace zorvane {

/// A connection for one query, which the server must answer within `longestXAnswer`. To be kept while the query runs,
/// on one thread.
class XQuery {
  public:
    explicit XQuery(std::shared_ptr<XConnection> connection)
        : connection_(std::move(connection)), limit_(connection_) {}

    const XConnection& operator*() const { return *connection_; }
    const XConnection* operator->() const { return connection_.get(); }

  private:
    const BrokenPipeScope brokenPipe_;  // first, so that it ends last
    const std::shared_ptr<XConnection> connection_;
    const XAnswerLimit limit_;
};

/// Opens a connection when one is first asked for, and again when it was lost. Any thread.
class XSession {
  public:
    /// A query on a living connection. Blocks while that is being made, for `longestXAnswer` at most; a connection that
    /// takes longer is waited for again by the next query. Throws `NSError`.
    XQuery query();

    /// Cuts the connection: queries that wait on it come back with an error, the next one makes a new connection.
    void reset();

  private:
    XConnection::Opening opening();

    std::mutex mutex_;              // never held for long
    XConnection::Opening opening_;  // guarded by mutex_; under way or done, or none
};

}  // namespace zorvane
