// Where the library's observable properties change and where completion callbacks arrive.
#pragma once

#include <functional>

namespace zorvane {

/// The main executor: one thread of the library, or the host's own loop. It runs one job at a time, in order.
///
/// A host with an event loop installs a hook before its first use of the library, so that it may read source objects
/// and take callbacks on its own thread without locks.
class ZVMainExecutor {
  public:
    /// Adds a job to the host's loop. Must be callable on any thread, must not run the job inside the call, and must
    /// keep the order of the jobs.
    using Hook = std::function<void(std::function<void()> job)>;

    /// From now on jobs go to the host's loop. An empty hook goes back to the library's own thread. Jobs posted before
    /// stay where they are. Any thread.
    static void install(Hook hook);

    /// Queues `job`, which must not throw. Any thread.
    static void post(std::function<void()> job);

    /// True inside a job of the main executor.
    static bool isCurrent();
};

}  // namespace zorvane
