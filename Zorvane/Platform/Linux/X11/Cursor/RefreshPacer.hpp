// Which refreshes of a display are worth a call.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

namespace zorvane {

/// Has the first call made as soon as something changes, then one for each refresh until nothing has changed for a
/// while. That while lets what others are told of the change arrive too: the last calls see all of it. A function of
/// changes and of the time it is given: it has no clock.
class RefreshPacer {
  public:
    using Time = std::chrono::nanoseconds;
    static constexpr std::chrono::milliseconds linger{100};

    enum class Step : std::uint8_t {
        call,
        pause,   ///< until the deadline; changes need not wake
        listen,  ///< until something changes
    };
    struct Next {
        Step step = Step::listen;
        std::optional<Time> deadline;
    };

    void noteChange(Time now);
    /// What is to be done now.
    Next next(Time now) const;
    /// A call was due. `interval` is the time between two refreshes.
    void noteCall(Time now, Time interval);

  private:
    bool isCallOwed_ = false;  // for a change
    std::optional<Time> lastChange_;
    std::optional<Time> nextRefresh_;
};

}  // namespace zorvane
