// Counts the work in flight, so that a clock under test control knows when nothing more can happen by itself.
#pragma once

namespace zorvane {

/// One piece of work in flight, from the moment it is queued until it is done. Executors and dispatch queues hold one
/// for each job. Whoever moves work on a thread of its own holds one while it has something to do.
class Activity {
  public:
    Activity() noexcept;
    Activity(const Activity&) noexcept : Activity() {}
    Activity& operator=(const Activity&) noexcept { return *this; }
    ~Activity();

    /// Blocks until no work is in flight anywhere in the process. What merely waits, for a timer or a continuation, is
    /// not in flight. Must not be called from a job, which would wait for itself.
    static void waitUntilIdle();
};

}  // namespace zorvane
