// The thread on which all calls of PipeWire are made.
#pragma once

#include <functional>
#include <memory>
#include <thread>

struct pw_loop;

namespace zorvane {

class PipeWireConnection;

/// A thread that waits for its descriptors and its blocks, and for nothing else. The connection that lives on it is
/// made there, before all blocks, and goes there, after the last one: nothing of PipeWire needs a lock.
class PipeWireLoop {
  public:
    using MakeConnection = std::function<std::shared_ptr<PipeWireConnection>(pw_loop& loop)>;

    /// Starts the thread. Throws `NSError` if PipeWire's own parts are missing or the process has no descriptor left.
    explicit PipeWireLoop(MakeConnection makeConnection);
    PipeWireLoop(const PipeWireLoop&) = delete;
    PipeWireLoop& operator=(const PipeWireLoop&) = delete;
    /// Drops the blocks that haven't begun and waits for the thread to end, connection and all. On the thread itself it
    /// doesn't wait: the thread ends as soon as the call that it is in returns.
    ~PipeWireLoop();

    /// Runs `block` on the thread, after those before it. Any thread.
    void async(std::function<void(PipeWireConnection& connection)> block);

  private:
    class Mailbox;

    const std::shared_ptr<Mailbox> mailbox_;
    std::thread thread_;
};

}  // namespace zorvane
