// From when to when a recording lasts: one shared pair of times, and each holder's stable view of it.
#pragma once

#include <limits>
#include <memory>

#include "Zorvane/Internal/Concurrency/DispatchQueue.hpp"

namespace zorvane {

/// The shared start and stop of one recording, in seconds on the host time clock. Positive infinity stands for "not
/// yet".
///
///     not started --start(at)--> recording --stop(at)--> stopped
///
/// The conductor writes each time once; the states are kept by it, not here. All recorders read, on any thread,
/// through a `StableRecordingInterval`. A write returns when every later read sees it, and no read sees half of one.
class VolatileRecordingInterval {
  public:
    void start(double at);
    void stop(double at);

  private:
    friend class StableRecordingInterval;

    struct Interval {
        double from = std::numeric_limits<double>::infinity();
        double until = std::numeric_limits<double>::infinity();
    };

    Interval interval() const;

    const DispatchQueue queue_ = DispatchQueue::concurrent("VolatileRecordingIntervalQueue");
    double recordFrom_ = Interval().from;  // guarded by queue_, as the next
    double recordUntil_ = Interval().until;
};

/// A holder's own snapshot of the recording interval. A plain value for one thread at a time; copies go their own
/// ways.
///
/// A sample path refreshes it once at its top and then decides on a pair of times that stays as it is:
///
///     interval.refresh();
///     if (interval.contains(hostTime.seconds())) { ... }
class StableRecordingInterval {
  public:
    /// Takes the first snapshot.
    explicit StableRecordingInterval(std::shared_ptr<const VolatileRecordingInterval> volatileRecordingInterval);

    /// Takes a new snapshot. Costs tens of nanoseconds and allocates nothing.
    void refresh();

    /// Seconds on the host time clock; infinity if unset when the snapshot was taken.
    double recordFrom() const { return interval_.from; }
    double recordUntil() const { return interval_.until; }

    /// Whether a sample of this time, in seconds on the host time clock, belongs to the recording: the start does, the
    /// end does not. No time does before the start is set.
    bool contains(double seconds) const { return seconds >= interval_.from && seconds < interval_.until; }

  private:
    std::shared_ptr<const VolatileRecordingInterval> volatileRecordingInterval_;
    VolatileRecordingInterval::Interval interval_;
};

}  // namespace zorvane
