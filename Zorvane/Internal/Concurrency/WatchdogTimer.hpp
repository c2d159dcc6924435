// A timer that sample paths push ahead again and again.
#pragma once

#include <chrono>
#include <functional>
#include <memory>

#include "Zorvane/Platform/Foundation/HostClock.hpp"

namespace zorvane {

/// Calls its handler when a time has passed without a further `arm`.
///
/// Arming an armed timer only moves its deadline, without an allocation or a system call: the one platform timer behind
/// it sleeps on, and when it fires too early it goes back to sleep for the rest. After the handler has been called, or
/// after `disarm`, the timer stays quiet until it is armed again. All operations may be called on any thread, `arm` and
/// `disarm` also inside the handler.
class WatchdogTimer {
  public:
    /// `handler` runs on the pool, never twice at once, and must not throw. The timer runs on the current platform's
    /// clock unless it is given another one.
    explicit WatchdogTimer(std::function<void()> handler);
    WatchdogTimer(std::function<void()> handler, std::shared_ptr<HostClock> clock);

    /// Disarms and waits: after it no handler runs.
    ~WatchdogTimer();
    WatchdogTimer(const WatchdogTimer&) = delete;
    WatchdogTimer& operator=(const WatchdogTimer&) = delete;

    /// Has the handler called in `duration` from now, at most `tolerance` later, in place of an earlier deadline. An
    /// earlier expiry whose handler has not begun is taken back.
    void arm(std::chrono::nanoseconds duration, std::chrono::nanoseconds tolerance);

    /// Takes the deadline back. A handler that runs at this moment is not waited for.
    void disarm();

    /// Takes the deadline back and waits for a handler that runs at this moment, unless called inside it. Must not be
    /// called with a lock or on a queue that the handler needs.
    void disarmAndWait();

  private:
    class State;

    std::shared_ptr<State> state_;
};

}  // namespace zorvane
