// Tells when a source has given everything up to the recording's end.
#pragma once

#include "Zorvane/Internal/Concurrency/Task.hpp"
#include "Zorvane/Internal/PrepareRingBufferAdaptor.hpp"
#include "Zorvane/Platform/CoreMedia/CMTime.hpp"

namespace zorvane {

/// For the moment after the stop: sources deliver late, so what belongs to the recording is still under way. Any
/// thread. Before the end a note allocates nothing.
class RecordingEndWatch {
  public:
    /// Notes that the source has given everything before `time`. Both are seconds on the host clock.
    void note(double time, double recordUntil) {
        if (time >= recordUntil) {
            reached_.append(time);
        }
    }

    /// Ends when the source has come to the end, or after a quarter of a second, which a source that has fallen silent
    /// costs; says which. The watch outlives the task.
    Task<bool> wait() const;

  private:
    PrepareRingBufferAdaptor<double> reached_{RingBuffer<double>(1)};
};

}  // namespace zorvane
