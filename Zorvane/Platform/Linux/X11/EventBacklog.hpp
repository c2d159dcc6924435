// Keeps up with programs that are faster.
#pragma once

#include <optional>

#include "Zorvane/Platform/Linux/X11/ServerGrab.hpp"

namespace zorvane {

/// Has the server's other clients wait when more has happened than can be dealt with at their pace, until all of it is.
class EventBacklog {
  public:
    /// Roughly what an event costs to deal with: a stroke of painting, and anything that happens to a window, which may
    /// take questions to the server.
    enum Effort : int { painting = 1, window = 50 };

    explicit EventBacklog(XConnection& connection) : connection_(connection) {}

    /// There is one more.
    void add(Effort effort) {
        effort_ += effort;
        if (effort_ >= mostEffort && !grab_) {
            grab_.emplace(connection_);
        }
    }
    /// There are none left.
    void clear() {
        effort_ = 0;
        grab_.reset();
    }

  private:
    /// More than window managers and programs have to tell of at a time.
    static constexpr int mostEffort = 10'000;

    XConnection& connection_;
    int effort_ = 0;
    std::optional<ServerGrab> grab_;
};

}  // namespace zorvane
