// Threads that leave the host's signals to the host.
#pragma once

namespace zorvane {

/// The host's signals are handled on the host's threads: for the thread that calls, and those that it starts.
void blockAllSignals();

}  // namespace zorvane
