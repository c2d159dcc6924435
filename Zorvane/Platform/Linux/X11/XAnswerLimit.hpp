// A time limit on what an X server is asked.
#pragma once

#include <memory>

#include "Zorvane/Platform/Foundation/HostClock.hpp"

namespace zorvane {

class XConnection;

/// Gives a connection up when this object lives for `longestXAnswer`, so that whoever waits for a server that hangs
/// comes back. Then the connection's `requireAlive` throws.
class XAnswerLimit {
  public:
    explicit XAnswerLimit(const std::shared_ptr<XConnection>& connection);
    ~XAnswerLimit();
    XAnswerLimit(const XAnswerLimit&) = delete;
    XAnswerLimit& operator=(const XAnswerLimit&) = delete;

  private:
    const HostClock::TimerID timer_;
};

}  // namespace zorvane
