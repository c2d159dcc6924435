// The one place that keeps up with what an X server's desktop shows.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

#include "Zorvane/Platform/Foundation/NSKeyValueObservation.hpp"
#include "Zorvane/Platform/Linux/X11/DesktopModel.hpp"

namespace zorvane {

/// What can be observed.
enum class DesktopAspect : std::uint8_t { displays, activeWindow, applications, windows };

/// A connection and a thread, "zv.desktop", that begin with the first question or observation. The thread waits for the
/// server's events and only notes them; a question reads anew what they outdated, and costs no more than a look at the
/// socket when there were none.
///
/// A server that isn't there has an empty desktop. The thread tries to reach it at a growing distance in time, of two
/// seconds at most. Its coming and going is a change of every aspect. Any thread may call.
class DesktopWatch {
  public:
    DesktopWatch();
    DesktopWatch(const DesktopWatch&) = delete;
    DesktopWatch& operator=(const DesktopWatch&) = delete;
    /// Joins the thread. May run inside a handler.
    ~DesktopWatch();

    /// The desktop now, with all that the server has told by then. Waits for the server if there is something to ask,
    /// and for the first connection, each for `longestXAnswer` at most. Never null. As long as nothing changes it is
    /// the same object.
    std::shared_ptr<const DesktopState> state();

    /// Another number after each change of the displays that the server has told of by now; nothing while there is no
    /// connection. Asks the server nothing.
    std::optional<std::uint64_t> displaysRevision();

    /// Calls `handler` on the thread after each change, until the token goes; many changes at once may give one call. A
    /// call that is under way may still finish then.
    NSKeyValueObservation observe(DesktopAspect aspect, std::function<void()> handler);

  private:
    class Core;
    void start();

    const std::shared_ptr<Core> core_;  // shared with the thread
    std::once_flag started_;
    std::thread thread_;
};

}  // namespace zorvane
