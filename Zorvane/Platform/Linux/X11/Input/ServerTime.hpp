// From an X server's clock to the host clock.
#pragma once

#include <chrono>
#include <cstdint>

namespace zorvane {

/// Milliseconds of the server, in 32 bits that wrap every 49.7 days, as times of the host clock. On one machine both
/// are the same clock, which shows when they are compared; another machine's clock is compared once, and its drift is
/// not followed. Events must come in the order of the server, none more than 24 days after the one before.
class ServerTime {
  public:
    /// The server read `serverTime` somewhen between `before` and `after` on the host clock.
    ServerTime(std::uint32_t serverTime, std::chrono::nanoseconds before, std::chrono::nanoseconds after);

    /// When an event of this time happened: the middle of its millisecond, but never later than `now` and never earlier
    /// than the event before.
    std::chrono::nanoseconds hostTime(std::uint32_t serverTime, std::chrono::nanoseconds now);

  private:
    void unwrap(std::uint32_t serverTime);

    std::chrono::milliseconds server_;   ///< the last event's time, without the wrap
    std::chrono::nanoseconds toHost_{};  ///< what lies between the two clocks; none if they are one
    std::chrono::nanoseconds lastHostTime_{};
};

}  // namespace zorvane
