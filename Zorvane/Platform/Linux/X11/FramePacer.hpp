// Decides when a changing screen is read.
#pragma once

#include <chrono>
#include <optional>

namespace zorvane {

/// Turns changes into moments to read: the first change after quiet at once, a burst once per interval on a grid that
/// doesn't drift, and one word when the screen has fallen still. Pure: every time comes from the caller and never
/// decreases.
class FramePacer {
  public:
    using Time = std::chrono::nanoseconds;

    enum class Step {
        read,      ///< read the screen now, then tell `noteRead` or `noteNoRoom`
        tellIdle,  ///< say that the screen is still, then tell `noteIdle`
        listen,    ///< wait for a change, until `deadline` at the latest if there is one
        rest,      ///< wait for `deadline`; a change in the meantime makes no difference
    };
    struct Decision {
        Step step;
        std::optional<Time> deadline;
    };

    /// The screen counts as still when nothing was read for `stillAfter`.
    FramePacer(Time interval, Time stillAfter) : interval_(interval), stillAfter_(stillAfter) {}

    /// Something changed that is yet to be looked at.
    void noteChange(Time now);
    /// The screen was looked at. `hasPicture`: a picture came of it; else the change lay outside what is shown.
    void noteRead(Time now, bool hasPicture);
    /// All pictures are in use: the change waits for the next interval.
    void noteNoRoom(Time now) { earliest_ = now + interval_; }
    void noteIdle() { stillAt_.reset(); }

    Decision decide(Time now) const;

  private:
    Time interval_;
    Time stillAfter_;
    std::optional<Time> changedAt_;  // the oldest change that is yet to be looked at
    Time earliest_ = Time::min();    // before this the screen isn't read
    std::optional<Time> stillAt_;    // when the screen counts as still, unless that has been said
};

}  // namespace zorvane
