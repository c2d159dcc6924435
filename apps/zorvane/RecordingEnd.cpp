#include "RecordingEnd.hpp"

namespace zorvane::cli {

void RecordingEnd::requestStop() {
    stop_.request_stop();  // outside the lock: it runs what others have hung on the token
    std::lock_guard lock(mutex_);
    changed_.notify_all();
}

void RecordingEnd::abort(const ZVRecorder::AbortReason& reason) {
    std::lock_guard lock(mutex_);
    abortReason_ = reason;
    changed_.notify_all();
}

std::optional<ZVRecorder::AbortReason> RecordingEnd::abortReason() const {
    std::lock_guard lock(mutex_);
    return abortReason_;
}

bool RecordingEnd::waitUntil(std::chrono::steady_clock::time_point deadline) const {
    std::unique_lock lock(mutex_);
    return changed_.wait_until(lock, deadline, [this] { return hasReason(); });
}

}  // namespace zorvane::cli
