// The one place that opens and closes a recorder's writer sessions.
#pragma once

#include <atomic>
#include <memory>
#include <string>

#include "Zorvane/Internal/Concurrency/DispatchQueue.hpp"
#include "Zorvane/Internal/Recorders/OutputAssetWriters.hpp"
#include "Zorvane/Internal/RecordingInterval.hpp"
#include "Zorvane/Platform/CoreMedia/CMTime.hpp"

namespace zorvane {

/// Opens the session of all of a recorder's writers exactly once, whichever sample path comes first; the other one
/// waits until it is open. Any thread but the queue's own blocks.
class WriterSession {
  public:
    /// `queueLabel` names the serial queue on which the decision is made.
    WriterSession(std::shared_ptr<OutputAssetWriters> writers, std::string queueLabel);

    /// Opens the session at `recordFrom`, on the host clock; where the writers expect video times that begin at 0, that
    /// of the video begins at 0. Does nothing once it is open.
    void startIfNeeded(CMTime recordFrom);

    bool didStart() const { return didStart_.load(std::memory_order_acquire); }

  private:
    void start(CMTime recordFrom);  // on startingQueue_

    const std::shared_ptr<OutputAssetWriters> writers_;
    const DispatchQueue startingQueue_;
    std::atomic<bool> didStart_{false};  // written on startingQueue_ only, after the session is open
};

/// Closes the sessions of all of a recorder's writers at the interval's end, on the time line that each was opened on.
/// Throws an `NSError` where there is none to close.
void endSessions(const OutputAssetWriters& writers, const StableRecordingInterval& interval);

}  // namespace zorvane
