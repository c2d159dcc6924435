// What ends a recording: its time is over, the user's wish, or an abort.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <stop_token>

#include "Zorvane/ZVRecorder.hpp"

namespace zorvane::cli {

/// Brings together those who end a recording and the one who waits for it. Any thread.
class RecordingEnd {
  public:
    /// The user wants no more.
    void requestStop();
    /// The recording has ended by itself.
    void abort(const ZVRecorder::AbortReason& reason);

    bool isStopRequested() const { return stop_.stop_requested(); }
    /// Cancels what can't be stopped in an orderly way, such as the preparation.
    std::stop_token stopToken() const { return stop_.get_token(); }
    std::optional<ZVRecorder::AbortReason> abortReason() const;

    /// Returns true as soon as there is a reason to end, false at `deadline` if there was none.
    bool waitUntil(std::chrono::steady_clock::time_point deadline) const;

  private:
    bool hasReason() const { return isStopRequested() || abortReason_; }

    std::stop_source stop_;
    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    std::optional<ZVRecorder::AbortReason> abortReason_;  // guarded by mutex_
};

}  // namespace zorvane::cli
