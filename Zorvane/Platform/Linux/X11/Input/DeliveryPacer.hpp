// When to ask a server for the input that it holds back.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

namespace zorvane {

/// Rests until something is heard, then asks at short intervals until nothing was heard for a while, which bridges the
/// time from a key's press to its first repeat. A function of events and of the time it is given: it has no clock.
class DeliveryPacer {
  public:
    static constexpr std::chrono::milliseconds interval{20};
    static constexpr std::chrono::milliseconds linger{1000};

    enum class Step : std::uint8_t {
        none,
        beginAsking,  ///< ask, and be told of input no more
        ask,
        rest,  ///< be told of input, then ask a last time for what came before that
    };

    /// `isHeard`: there was input, or word of it, since the last call.
    Step next(bool isHeard, std::chrono::nanoseconds now);

    /// When `next` has something to do though nothing is heard; never while it rests.
    std::optional<std::chrono::nanoseconds> deadline() const;

  private:
    bool isAsking_ = false;
    std::chrono::nanoseconds lastHeard_{};
    std::chrono::nanoseconds nextAsk_{};
};

}  // namespace zorvane
