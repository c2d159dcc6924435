// Living through a connection's other end.
#pragma once

#include <csignal>

namespace zorvane {

/// XCB writes to its socket in the plain way; a server that ends just then must not end the process. For the thread
/// that calls.
void blockBrokenPipeSignal();

/// The same for as long as it lives, on a thread that isn't ours; a signal that comes meanwhile is dropped. To be
/// destroyed on the thread that made it.
class BrokenPipeScope {
  public:
    BrokenPipeScope();
    ~BrokenPipeScope();
    BrokenPipeScope(const BrokenPipeScope&) = delete;
    BrokenPipeScope& operator=(const BrokenPipeScope&) = delete;

  private:
    sigset_t outer_;
    bool wasPending_;
};

}  // namespace zorvane
