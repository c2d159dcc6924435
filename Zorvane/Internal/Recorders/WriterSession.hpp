// The one place that opens a recorder's writer session.
#pragma once

#include <atomic>
#include <memory>
#include <string>

#include "Zorvane/Internal/Concurrency/DispatchQueue.hpp"
#include "Zorvane/Internal/Recorders/OutputAssetWriters.hpp"
#include "Zorvane/Platform/CoreMedia/CMTime.hpp"

namespace zorvane {

/// Opens the session of all of a recorder's writers exactly once, whichever sample path comes first; the other one
/// waits until it is open. Any thread but the queue's own blocks.
class WriterSession {
  public:
    /// `queueLabel` names the serial queue on which the decision is made.
    WriterSession(std::shared_ptr<OutputAssetWriters> writers, std::string queueLabel);

    /// Opens the session at `time`, on the host clock or from 0 as the writers expect it; does nothing once it is open.
    void startIfNeeded(CMTime time);

    bool didStart() const { return didStart_.load(std::memory_order_acquire); }

  private:
    void start(CMTime time);  // on startingQueue_

    const std::shared_ptr<OutputAssetWriters> writers_;
    const DispatchQueue startingQueue_;
    std::atomic<bool> didStart_{false};  // written on startingQueue_ only, after the session is open
};

}  // namespace zorvane
